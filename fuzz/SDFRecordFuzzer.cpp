// SDF records and the trees they form: the first byte picks the file version the records
// are read as; then, up to 16 times, a byte picks the parent among the tools read so far
// (or the root) and an SDF record follows. The loaded trees are repaired as after a scene
// load, and must then be sound, with every field in range, and evaluate without a crash.
#include "Scene/IFile.h"
#include "Scene/Root.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tools/SDFTool/SDFEvaluator.h"
#include "Scene/Tools/SDFTool/SDFTool.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

void Fail(char const* what)
{
    std::fprintf(stderr, "SDF invariant broken: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size == 0)
        return 0;
    static int const versions[]
        = {20230301, 20230302, 20230411, 20230427, 20230501, 20230513, 20230531, vel::SDF_VERSION_CURRENT};
    int version = versions[data[0] % (sizeof(versions) / sizeof(versions[0]))];
    vel::IFile in(QByteArray(reinterpret_cast<char const*>(data + 1), int(size - 1)));
    vel::History& history = vel::History::instance();
    history.enabled = false; // as during a load
    auto* root = new vel::Root;
    std::vector<vel::SDFTool*> tools;
    uint8_t pick = 0;
    while (tools.size() < 16 && in.readValue(pick)) {
        auto* t = new vel::SDFTool;
        bool complete = t->SDFDataRead(in, version);
        vel::Tool* parent
            = pick % (tools.size() + 1) == 0 ? static_cast<vel::Tool*>(root) : tools[pick % (tools.size() + 1) - 1];
        parent->addChild(t);
        tools.push_back(t);
        if (!complete)
            break;
    }
    std::unordered_map<int, vel::Tool*> reachable;
    root->toMap(reachable);
    vel::SDFTool::RepairLoaded(reachable, version);
    std::vector<vel::Tool*> list;
    root->toList(list);
    for (vel::SDFTool* t : tools) {
        if (!t->sdf.repair().empty())
            Fail("a field out of range after loading");
        if (t->isMember())
            continue;
        if (!t->validateTree().empty())
            Fail("an unsound tree after the repair");
        vel::SDFEvaluator evaluator;
        evaluator.build(t->sdfs);
        volatile float d = evaluator.distance({0.1f, 0.2f, 0.3f});
        (void)d;
    }
    delete root;
    history.enabled = true;
    return 0;
}
