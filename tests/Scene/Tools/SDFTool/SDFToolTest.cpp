// SDF trees: membership, listing, order, brackets and their repairs, the commands of the
// operation and of parenting, undo of all of it, and the repair of loaded trees.
#include "Scene/Commands/CommandSDFSave.h"
#include "Scene/Elements/Mesh/MeshFixtures.h" // LogCapture
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/Tools/SDFTool/SDFEvaluator.h"
#include "Scene/Tools/SDFTool/SDFTool.h"
#include "Scene/SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>

namespace vel::test {
namespace {

class SDFTreeTest : public TreeTest {
protected:
    // A tool under `parent` with the given class, priority and bracket, placed raw (no
    // bookkeeping), so that any list can be set up.
    SDFTool* sdf(Tool* parent, int op, int priority = 0, int bracket = 0)
    {
        SDFObj o;
        o.operation = uint8_t(op);
        o.priority = int16_t(priority);
        o.bracket = int16_t(bracket);
        auto* t = new SDFTool(o);
        parent->addChild(t);
        return t;
    }

    // The tree of `top` in priority order, as (tool, priority, bracket).
    static std::vector<std::tuple<SDFTool*, int, int>> list(SDFTool* top)
    {
        std::vector<std::tuple<SDFTool*, int, int>> out;
        for (auto& entry : top->findOrder())
            out.emplace_back(entry.second, entry.second->sdf.priority, entry.second->sdf.bracket);
        return out;
    }

    static std::vector<int> brackets(SDFTool* top)
    {
        std::vector<int> out;
        for (auto& entry : top->findOrder())
            out.push_back(entry.second->sdf.bracket);
        return out;
    }
};

TEST_F(SDFTreeTest, ListingGathersMembersIntoTheirTop)
{
    SDFTool* top = sdf(root, SDF_ADD);
    SDFTool* member = sdf(top, SDF_SUB, 1);
    SDFTool* foreign = sdf(top, SDF_NOOP); // no operation under an SDF parent: a tree of its own
    SDFTool* grandchild = sdf(foreign, SDF_ADD, 1);
    Tool* group = add(top);
    SDFTool* underGroup = sdf(group, SDF_ADD); // its parent is no SDFTool
    std::vector<Tool*> all;
    root->toList(all);

    auto tools = [](SDFTool* t) {
        std::vector<SDFTool*> out;
        for (auto& e : t->sdfs)
            out.push_back(e.tool);
        return out;
    };
    EXPECT_EQ(tools(top), (std::vector<SDFTool*>{top, member}));
    EXPECT_EQ(tools(foreign), (std::vector<SDFTool*>{foreign, grandchild}));
    EXPECT_EQ(tools(underGroup), (std::vector<SDFTool*>{underGroup}));
    EXPECT_EQ(member->top, top);
    EXPECT_EQ(grandchild->top, foreign);
    EXPECT_EQ(TreeSDFCount(top), 2);
    EXPECT_EQ(top->sdfs[1].selection, member->listIndex);
    EXPECT_TRUE(top->sdfContains(member));
    EXPECT_FALSE(top->sdfContains(foreign));
    EXPECT_TRUE(top->hasSDFHierarchy());
    EXPECT_FALSE(member->hasSDFHierarchy());
    // A tree of one has no combination steps.
    EXPECT_TRUE(SDFTool::operations(underGroup->sdfs).empty());
}

TEST_F(SDFTreeTest, EqualPrioritiesKeepTheBreadthFirstOrder)
{
    SDFTool* top = sdf(root, SDF_ADD);
    SDFTool* a = sdf(top, SDF_ADD);
    SDFTool* a1 = sdf(a, SDF_ADD);
    SDFTool* b = sdf(top, SDF_SUB);
    SDFTool* c = sdf(top, SDF_ADD, -1);
    EXPECT_EQ(list(top), (std::vector<std::tuple<SDFTool*, int, int>>{
                             {c, -1, 0}, {top, 0, 0}, {a, 0, 0}, {b, 0, 0}, {a1, 0, 0}}));
    top->fixPriorities();
    EXPECT_EQ(list(top), (std::vector<std::tuple<SDFTool*, int, int>>{
                             {c, 0, 0}, {top, 1, 0}, {a, 2, 0}, {b, 3, 0}, {a1, 4, 0}}));
}

TEST_F(SDFTreeTest, CombinationStepsFollowTheBrackets)
{
    // A (B C) D, with the group opened by B and closed by C.
    SDFTool* top = sdf(root, SDF_ADD, 0);
    sdf(top, SDF_SUB, 1, 1);
    sdf(top, SDF_ADD, 2, -1);
    sdf(top, SDF_ADD, 3);
    std::vector<Tool*> all;
    root->toList(all);
    EXPECT_EQ(SDFTool::operations(top->sdfs), (std::vector<std::pair<int, int>>{{2, 2}, {2, 1}, {3, 3}}));
}

// Brackets that point nowhere are mended as commands, and undo gives them back.
TEST_F(SDFTreeTest, FixTreeMendsBracketsAndPriorities)
{
    struct Case {
        std::vector<int> priorities, brackets, fixed;
    };
    Case const cases[] = {
        {{0, 1, 2}, {0, -1, 0}, {0, 0, 0}},           // a close with nothing open
        {{0, 1, 2}, {1, 0, 0}, {0, 0, 0}},            // an open that never closes
        {{0, 1, 2, 3}, {0, 2, -1, 0}, {0, 1, -1, 0}}, // one of two never closes
        {{0, 1, 2}, {1, 0, -1}, {0, 0, 0}},           // a pair around everything groups nothing
        {{0, 0, 0}, {0, 1, -1}, {0, 1, -1}},          // equal priorities: renumbered in walk order
        {{7, 3, 5}, {-300, 300, 0}, {0, 0, 0}},       // out of all measure
    };
    for (Case const& c : cases) {
        SDFTool* top = sdf(root, SDF_ADD, c.priorities[0], c.brackets[0]);
        for (size_t i = 1; i < c.priorities.size(); ++i)
            sdf(top, SDF_ADD, c.priorities[i], c.brackets[i]);
        auto before = list(top);
        history().superBegin("fix", false);
        top->fixTree();
        history().superEnd();
        EXPECT_EQ(brackets(top), c.fixed);
        EXPECT_TRUE(top->validateTree().empty()) << top->validateTree().front();
        EXPECT_FALSE(top->fixTree()) << "a sound tree stays as it is";
        history().undo();
        EXPECT_EQ(list(top), before);
        top->remove();
    }
}

TEST_F(SDFTreeTest, RemovingAClosingBracketMovesItInsideThePair)
{
    // T (A B C) D: deleting C gives its close to B; deleting the opener A gives its open to B.
    for (int leaving : {3, 1}) {
        SDFTool* top = sdf(root, SDF_ADD, 0);
        std::vector<SDFTool*> t{top};
        int const br[] = {0, 1, 0, -1, 0};
        for (int i = 1; i < 5; ++i)
            t.push_back(sdf(top, SDF_ADD, i, br[i]));
        auto before = list(top);
        t[leaving]->remove();
        EXPECT_EQ(brackets(top), (std::vector<int>{0, 1, -1, 0})) << "leaving " << leaving;
        EXPECT_TRUE(top->validateTree().empty());
        history().undo();
        EXPECT_EQ(list(top), before);
        top->remove();
    }
}

TEST_F(SDFTreeTest, OperationJoinsAndLeavesTheParentTreeAsOneStep)
{
    SDFTool* top = sdf(root, SDF_ADD, 0);
    SDFTool* a = sdf(top, SDF_SUB, 1);
    SDFTool* guest = sdf(top, SDF_NOOP, 0); // a tree of its own with a member
    SDFTool* guestChild = sdf(guest, SDF_ADD, 1);
    int steps = history().currentIndex;

    g_SDF_OPERATION(guest, SDF_SUB);
    EXPECT_EQ(history().currentIndex, steps + 1);
    EXPECT_EQ(guest->treeTop(), top);
    // The guest's subtree goes to the end, grouped.
    EXPECT_EQ(list(top), (std::vector<std::tuple<SDFTool*, int, int>>{
                             {top, 0, 0}, {a, 1, 0}, {guest, 2, 1}, {guestChild, 3, -1}}));

    g_SDF_OPERATION(guest, SDF_NOOP);
    EXPECT_EQ(list(top), (std::vector<std::tuple<SDFTool*, int, int>>{{top, 0, 0}, {a, 1, 0}}));
    EXPECT_EQ(list(guest), (std::vector<std::tuple<SDFTool*, int, int>>{{guest, 0, 0}, {guestChild, 1, 0}}));

    history().undo();
    EXPECT_EQ(guest->sdf.operation, SDF_SUB);
    EXPECT_EQ(list(top).size(), 4u);
    history().undo();
    EXPECT_EQ(guest->sdf.operation, SDF_NOOP);
    EXPECT_EQ(guest->sdf.priority, 0);
    EXPECT_EQ(guestChild->sdf.priority, 1);

    // The Tab key never reaches intersection.
    std::vector<int> cycle;
    for (unsigned char op = 0, i = 0; i < 7; ++i)
        cycle.push_back(op = SDFTool::nextOperation(op));
    EXPECT_EQ(cycle, (std::vector<int>{1, 2, 4, 5, 6, 0, 1}));
}

TEST_F(SDFTreeTest, ParameterDragsFoldIntoOneStep)
{
    SDFTool* t = sdf(root, SDF_ADD);
    SDFObj first = t->sdf;
    for (float r : {0.1f, 0.2f, 0.3f}) {
        SDFObj before = t->sdf;
        t->sdf.R = r;
        auto* c = new CommandSDFSave(t, before);
        c->mergeable = true;
        history().push(c);
    }
    SDFObj before = t->sdf;
    t->sdf.thickness = 2;
    t->sdf.priority = 5; // not a parameter: left alone by the command
    auto* other = new CommandSDFSave(t, before);
    other->mergeable = true;
    history().push(other);
    int steps = history().currentIndex;
    history().undo();
    history().undo();
    EXPECT_EQ(history().currentIndex, steps - 2);
    EXPECT_EQ(t->sdf.difference(first), -1);
    EXPECT_EQ(t->sdf.priority, 5);
    history().redo();
    EXPECT_EQ(t->sdf.R, 0.3f);
}

TEST_F(SDFTreeTest, PriorityGroupMapAndSavedBrackets)
{
    SDFTool* top = sdf(root, SDF_ADD, 0);
    SDFTool* a = sdf(top, SDF_ADD, 1, 1);
    SDFTool* b = sdf(a, SDF_SUB, 2);
    SDFTool* c = sdf(top, SDF_ADD, 3, -1);
    std::unordered_map<Tool*, std::pair<short, short>> pairs;
    a->setSDFPriorityGroup(pairs, 10);
    EXPECT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[b], (std::pair<short, short>(12, 0)));

    // a's open is matched by c outside its subtree: taken away, then restored by the saved list.
    std::deque<short> saved = a->removeExternalBrackets();
    EXPECT_EQ(saved, (std::deque<short>{2}));
    EXPECT_EQ(a->sdf.bracket, 0);
    a->setSDFPriorityGroup(1, saved);
    EXPECT_EQ(a->sdf.bracket, 1);
    EXPECT_EQ(b->sdf.priority, 2);
    EXPECT_EQ(c->sdf.bracket, -1);
}

// The capped torus goes to the outline with its half angle in radians, and a linear
// array's box is the whole array.
TEST_F(SDFTreeTest, OutlinesCarryTheShaderValues)
{
    SDFTool* member = sdf(root, SDF_SUB);
    member->sdf.shape = SDF_TORUS;
    member->sdf.dims = {2, 0.5f, 90};
    SDFOutline o = member->simpleOutline(Matrix34<double>());
    EXPECT_EQ(o.ids[0], SDF_CAPPED_TORUS);
    EXPECT_NEAR(o.dims_r[2], 3.14159265 / 4, 1e-6);
    member->sdf.shape = SDF_BOX;
    member->sdf.nx = 3;
    o = member->simpleOutline(Matrix34<double>());
    EXPECT_EQ(o.ids[2], SDF_ARRAY_LINEAR);
    EXPECT_EQ(o.nn[0], 3);
    EXPECT_NEAR(o.box.max.x, 1 + 2, 1e-6); // half size 1, copies 2 apart
}

// Records of a top and three members as a load meets them: brackets that never close, all
// priorities 0, a shape out of range, a NaN size, and a record cut short.
TEST_F(SDFTreeTest, MalformedRecordsLoadRepairedWithWarnings)
{
    LogCapture log;
    std::string bytes;
    for (int i = 0; i < 4; ++i) {
        SDFObj o;
        o.operation = uint8_t(i == 0 ? SDF_NOOP : SDF_ADD);
        o.bracket = int16_t(i == 0 ? 30000 : 0);
        o.dims.y = i == 2 ? std::nanf("") : 1.0f;
        OFile out;
        o.DataWrite(out);
        std::string record = out.bytes();
        if (i == 1)
            record[28] = char(99); // the shape byte
        bytes += i == 3 ? record.substr(0, 40) : record;
    }
    IFile in(QByteArray::fromStdString(bytes));
    history().enabled = false;
    std::vector<SDFTool*> tools;
    for (int i = 0; i < 4; ++i) {
        auto* t = new SDFTool;
        EXPECT_EQ(t->SDFDataRead(in, SDF_VERSION_CURRENT), i < 3);
        (tools.empty() ? static_cast<Tool*>(root) : tools[0])->addChild(t);
        tools.push_back(t);
    }
    std::unordered_map<int, Tool*> map;
    root->toMap(map);
    EXPECT_EQ(SDFTool::RepairLoaded(map, SDF_VERSION_CURRENT), 1);
    history().enabled = true;
    EXPECT_TRUE(tools[0]->validateTree().empty());
    EXPECT_EQ(tools[1]->sdf.shape, SDF_SPHERE);
    EXPECT_EQ(tools[2]->sdf.dims.y, 1.0f);
    ASSERT_EQ(log.entries.size(), 4u) << log.all().toStdString();
    for (auto const& entry : log.entries)
        EXPECT_EQ(entry.second, 1) << entry.first.toStdString();
}

// ---- random edits ----------------------------------------------------------------------

struct Entry {
    Tool* tool;
    Tool* parent;
    int op, priority, bracket;
    bool operator==(Entry const& o) const
    {
        return tool == o.tool && parent == o.parent && op == o.op && priority == o.priority && bracket == o.bracket;
    }
};

void PrintTo(Entry const& e, std::ostream* out)
{
    *out << "{" << e.tool->id << " under " << (e.parent ? e.parent->id : -1) << ": op " << e.op << " priority "
         << e.priority << " bracket " << e.bracket << "}";
}

std::vector<Entry> Snapshot(Tool* root)
{
    std::vector<Tool*> all;
    root->toList(all);
    std::vector<Entry> out;
    for (Tool* t : all)
        if (t->isSDF()) {
            auto* s = static_cast<SDFTool*>(t);
            out.push_back({t, t->Parent, s->sdf.operation, s->sdf.priority, s->sdf.bracket});
        }
    return out;
}

class SDFRandomTest : public SDFTreeTest, public ::testing::WithParamInterface<unsigned> {};

TEST_P(SDFRandomTest, EveryStepKeepsTheListSoundAndUndoesExactly)
{
    std::mt19937 rng(GetParam());
    auto uniform = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    std::vector<SDFTool*> alive;
    auto inTree = [&] {
        std::vector<Tool*> all;
        root->toList(all);
        std::vector<SDFTool*> out;
        for (Tool* t : all)
            if (t->isSDF())
                out.push_back(static_cast<SDFTool*>(t));
        return out;
    };
    history().active = false;
    for (int i = 0; i < 6; ++i) {
        std::vector<SDFTool*> tools = inTree();
        Tool* parent = tools.empty() || uniform(0, 3) == 0 ? static_cast<Tool*>(root) : tools[uniform(0, int(tools.size()) - 1)];
        sdf(parent, SDF_NOOP);
    }
    history().active = true;
    std::deque<std::vector<Entry>> states{Snapshot(root)};

    auto check = [&](char const* what, int step) {
        for (SDFTool* t : inTree())
            if (!t->isMember()) {
                auto v = t->validateTree();
                ASSERT_TRUE(v.empty()) << what << " at step " << step << ": " << v.front();
            }
    };
    for (int step = 0; step < 400; ++step) {
        std::vector<SDFTool*> tools = inTree();
        int before = history().currentIndex;
        int action = uniform(0, 9);
        if (tools.empty())
            action = 7;
        SDFTool* t = tools.empty() ? nullptr : tools[uniform(0, int(tools.size()) - 1)];
        Tool* host = t ? static_cast<Tool*>(t) : root;
        if (action <= 2) {
            g_SDF_OPERATION(t, uint8_t(uniform(0, 6)));
        } else if (action <= 4) {
            std::vector<Tool*> targets{root};
            for (SDFTool* s : tools) {
                Tool* up = s;
                while (up && up != t)
                    up = up->Parent;
                if (!up)
                    targets.push_back(s);
            }
            g_SDF_PARENT(t, targets[uniform(0, int(targets.size()) - 1)]);
        } else if (action == 5) {
            // An edit of the pair from the panel, then the repair of the tree.
            history().superBegin("pair", false);
            t->setPriorityBracket(int16_t(uniform(-2, 8)), int16_t(uniform(-2, 2)));
            t->treeTop()->fixTree();
            history().superEnd();
        } else if (action == 6 && tools.size() > 8) {
            t->remove();
        } else if (action == 6 || action == 7) {
            history().superBegin("create", false);
            auto* fresh = new SDFTool();
            host->addChild(fresh);
            g_SDF_OPERATION(fresh, uint8_t(uniform(1, 6)));
            history().superEnd();
        } else if (action == 8 && history().currentIndex >= 0) {
            history().undo();
            ASSERT_EQ(Snapshot(root), states[history().currentIndex + 1]) << "undo at step " << step;
            check("undo", step);
            continue;
        } else if (history().currentIndex + 1 < int(history().commands.size())) {
            history().redo();
            ASSERT_EQ(Snapshot(root), states[history().currentIndex + 1]) << "redo at step " << step;
            check("redo", step);
            continue;
        }
        check("edit", step);
        if (history().currentIndex != before) {
            ASSERT_EQ(history().currentIndex, before + 1);
            states.resize(size_t(before + 3));
            states[before + 2] = Snapshot(root);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SDFRandomTest, ::testing::Values(1u, 2u, 3u, 4u));

} // namespace
} // namespace vel::test
