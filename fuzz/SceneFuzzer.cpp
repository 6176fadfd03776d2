// Scene and object files: the input is a whole file, loaded into a private scene as a load
// worker does. Beyond "no crash": what the load kept is one sound tree (every child's parent
// lists it, rings close), and once the scene and its tool box tools go, no tool and no
// element is left alive.
#include "FuzzCheck.h"

#include "Scene/IFile.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneFile.h"
#include "Scene/Tool.h"

#include <QByteArray>

namespace {

void CheckTree(vel::Tool* tool, int& budget)
{
    if (--budget < 0) {
        std::fprintf(stderr, "a tool is reached twice\n");
        std::abort();
    }
    vel::Tool* t = tool;
    for (int steps = 0; (t = t->linkNext) != tool; ++steps)
        if (steps > vel::Tool::COUNT) {
            std::fprintf(stderr, "a ring of links does not close\n");
            std::abort();
        }
    for (vel::Tool* child : tool->children) {
        if (child->Parent != tool) {
            std::fprintf(stderr, "a child does not know its parent\n");
            std::abort();
        }
        CheckTree(child, budget);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    {
        vel::IFile in(QByteArray(reinterpret_cast<char const*>(data), int(size)));
        vel::Scene scene;
        scene.load(in);
        int budget = vel::Tool::COUNT;
        for (vel::Tool* child : scene.root->children)
            CheckTree(child, budget);
        for (vel::UITool& entry : vel::Scene::UITools) {
            CheckTree(entry.tool, budget);
            delete entry.tool;
        }
        vel::Scene::UITools.clear();
    }
    vel::gDeleteLoadBuffers();
    if (vel::Tool::COUNT != 0 || vel::Element::COUNT != 0) {
        std::fprintf(stderr, "%d tools and %d elements outlive their scene\n", vel::Tool::COUNT, vel::Element::COUNT);
        std::abort();
    }
    return 0;
}
