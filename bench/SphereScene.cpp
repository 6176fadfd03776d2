#include "SphereScene.h"

#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Support/GLTestContext.h"

#include <glad/gl.h>

namespace vel::bench {

void WithSphereScene(benchmark::State& state, int subdivisions, int style,
                     std::function<void(GLView& view, Mesh const& sphere)> const& body)
{
    std::string error;
    if (!test::MakeGLContextCurrent(&error)) {
        state.SkipWithError(("no GL context: " + error).c_str());
        return;
    }
    InitResources();
    unsigned vertexArray = 0;
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    Rendering& r = Rendering::instance();
    r.openResources();
    r.style = style;
    Scene& scene = Scene::instance();
    scene.init(false);
    Mesh* mesh = Mesh::Sphere(Mesh::Icosahedron(), subdivisions).release();
    Shared<Element> sphere(mesh);
    for (int i = 0; i < 3; ++i)
        (new Tool(sphere, Matrix34<double>::Translation({2.2 * (i - 1), 0.0, 0.0})))->addToParent(scene.root);
    {
        GLView view(1280, 800);
        view.viewAll();
        view.render();
        glFinish();
        body(view, *mesh);
    }
    scene.init(false);
    History::instance().clear();
    sphere->deleteGPUData();
    r.closeResources();
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
}

} // namespace vel::bench
