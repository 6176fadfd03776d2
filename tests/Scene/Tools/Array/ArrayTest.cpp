// Arrays, snakes and enders without GL: instance frames and the per-frame listing, the
// chain twist, Explode's steps, the Tab toggle, and their scene file records.
#include "Scene/Tools/Array/Array.h"
#include "Scene/Tools/Array/Ender.h"
#include "Scene/Tools/Array/Snake.h"

#include "Scene/Commands/CommandArrayEdgeVert.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/ToolList.h"

#include "../../Elements/Mesh/MeshFixtures.h"
#include "../../SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel::test {
namespace {

constexpr double PI = 3.14159265358979323846;

// Two closed chains, `first` and `second` links, side by side.
Curve* TwoRings(int first, int second)
{
    Curve* c = Curve::NGon(first, false);
    std::unique_ptr<Curve> other(Curve::NGon(second, false));
    for (CurveVert& v : other->verts)
        v.position += Vector3<float>(3, 0, 0);
    c->append(other.get());
    return c;
}

// The angle about its own z by which frame `twisted` is turned against `plain`.
double TurnAboutZ(Matrix34<double> const& plain, Matrix34<double> const& twisted)
{
    Vector3<double> x = plain.row(0).normalize(), y = plain.row(1).normalize();
    Vector3<double> t = twisted.row(0).normalize();
    return std::atan2(t.dot(y), t.dot(x));
}

class ArrayTest : public SceneTest {
protected:
    // An array of `type` on `axis` under the root, with a one-tool item (a cube).
    Array* makeArray(Curve* axis, int type, Tool** itemOut = nullptr)
    {
        auto* array = new Array(Shared<Element>(axis), type);
        root->addChild(array);
        Tool* item = new Tool(Shared<Element>(ClosedCube().release()), moveBy(0, 0, 0.1));
        array->setItem(item);
        if (itemOut)
            *itemOut = item;
        return array;
    }
};

TEST_F(ArrayTest, ClosedOddChainsTwistAndEvenOnesOnlyAlternate)
{
    struct Case {
        int type;
        int links;
        double step; // the twist per instance
    } const cases[] = {
        {1, 3, PI / 2}, {1, 4, 0}, {2, 3, PI / 3}, {2, 5, PI / 5}, {0, 3, 0},
    };
    for (Case const& k : cases) {
        SCOPED_TRACE(testing::Message() << "type " << k.type << " links " << k.links);
        Array* plain = makeArray(Curve::NGon(k.links, false), 0);
        Array* array = makeArray(Curve::NGon(k.links, false), k.type);
        std::vector<Matrix34<double>> a, b;
        std::vector<int> ends;
        plain->instanceFrames(false, a, ends);
        array->instanceFrames(false, b, ends);
        ASSERT_EQ(b.size(), size_t(k.links));
        for (size_t i = 0; i < b.size(); ++i) {
            Matrix34<double> expected = a[i];
            if (k.step != 0)
                expected = Matrix34<double>(Matrix3<double>::RotationAroundUnitAxis({0, 0, 1}, std::sin(i * k.step),
                                                                                     std::cos(i * k.step))) *
                           expected;
            if (k.type != 0 && i % 2 == 1)
                expected = array->oddMatrix * expected;
            for (int m = 0; m < 12; ++m)
                EXPECT_NEAR(b[i].m[m], expected.m[m], 1e-5) << "instance " << i << " entry " << m;
        }
    }
}

TEST_F(ArrayTest, SeveralChainsDecideTheirTwistEachAndExplodeOneStepEach)
{
    Array* array = makeArray(TwoRings(3, 4), 1);
    std::vector<Matrix34<double>> frames;
    std::vector<int> ends;
    array->instanceFrames(false, frames, ends);
    ASSERT_EQ(ends, (std::vector<int>{3, 7}));
    Array* even = makeArray(Curve::NGon(4, false), 1);
    std::vector<Matrix34<double>> alone;
    even->instanceFrames(false, alone, ends);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(TurnAboutZ(alone[i], frames[3 + i]), 0.0, 1e-5) << "the four-link ring has no twist";

    Tool* child = add(array);
    size_t before = history().commands.size();
    std::deque<Tool*> groups = array->Explode();
    ASSERT_EQ(groups.size(), 1u);
    Tool* group = groups.front();
    EXPECT_TRUE(group->isGroup());
    EXPECT_EQ(group->children.size(), 8u) << "seven instances and the array's child";
    EXPECT_EQ(child->Parent, group);
    int adds = 0;
    for (size_t i = before; i < history().commands.size(); ++i)
        adds += history().commands[i]->name() == "Add Objects";
    EXPECT_EQ(adds, 2);
}

TEST_F(ArrayTest, ListingAddsTheArrayThenEveryInstanceWithItsNumberAndWorldMatrix)
{
    Tool* item = nullptr;
    Curve* axis = Curve::Segment(4, 0);
    Array* array = makeArray(axis, 0, &item);
    array->objectMatrix = moveBy(5, 0, 0);
    ToolList list;
    list.append(root, false);
    ASSERT_EQ(list.count(), 1 + 4);
    std::vector<Matrix34<double>> frames;
    std::vector<int> ends;
    array->instanceFrames(false, frames, ends);
    for (int i = 0; i < 4; ++i) {
        RenderItem const& entry = list.items[size_t(i + 1)];
        EXPECT_EQ(entry.tool, item);
        EXPECT_EQ(entry.instance, i);
        EXPECT_EQ(entry.parent, 0);
        Matrix34<double> expected = item->transform() * frames[size_t(i)] * axis->Transform(1.0f) * moveBy(5, 0, 0);
        for (int m = 0; m < 12; ++m)
            EXPECT_NEAR(list.matrices[size_t(i + 1)].m[m], expected.m[m], 1e-9);
    }
    EXPECT_TRUE(CommandArrayEdgeVert::Toggle(array));
    list.clear();
    list.append(root, false);
    EXPECT_EQ(list.count(), 1 + 5) << "on the vertices: one more";
    history().undo();
    EXPECT_EQ(array->edgeMode, 1);
    history().redo();
    EXPECT_EQ(array->edgeMode, 0);

    axis->clear();
    list.clear();
    list.append(root, false);
    EXPECT_EQ(list.count(), 1) << "an empty axis lists the array alone";
    EXPECT_TRUE(array->Explode().empty());
}

TEST_F(ArrayTest, EndersFacingOutwardAndSnakeCountsFollowTheMode)
{
    auto* ender = new Ender(Shared<Element>(Curve::Segment(2, 0)));
    root->addChild(ender);
    std::vector<Matrix34<double>> ends;
    ender->endFrames(ends);
    ASSERT_EQ(ends.size(), 2u);
    EXPECT_LT(ends[0].row(2).z, 0) << "the start's item points back";
    EXPECT_GT(ends[1].row(2).z, 0);
    EXPECT_LT(ends[0].translation().z, ends[1].translation().z);

    struct Case {
        Curve* axis;
        int mode;
        int count;
        int instances;
        float multiplier;
    } const cases[] = {
        {Curve::Segment(4, 0), 0, 9, 1, 4.0f},
        {Curve::Segment(4, 0), 1, 9, 4, 1.0f},
        {Curve::Segment(4, 0), 2, 8, 8, 0.5f},
        {Curve::NGon(6, false), 1, 1, 6, 1.0f},
        {Curve::NGon(6, false), 0, 1, 2, 5.0f},
    };
    for (Case const& k : cases) {
        Snake snake(Shared<Element>(k.axis), 0, k.mode);
        snake.itemsCount = k.count;
        int instances = 0;
        float multiplier = 0;
        ASSERT_TRUE(snake.instancing(instances, multiplier));
        EXPECT_EQ(instances, k.instances) << "mode " << k.mode;
        EXPECT_FLOAT_EQ(multiplier, k.multiplier) << "mode " << k.mode;
    }
    Snake lone(Shared<Element>(new Curve({{0, 0, 0}}, false, false, 0)), 0, 1);
    int instances = 0;
    float multiplier = 0;
    EXPECT_FALSE(lone.instancing(instances, multiplier)) << "one vertex: nothing to draw";
}

TEST_F(ArrayTest, AnExplodedSnakeIsTheBendOfTheShaderOnTheProcessor)
{
    // Stretched over four straight segments: z stays, the cross-section grows fourfold.
    auto* snake = new Snake(Shared<Element>(Curve::Segment(4, 0)), 0, 0);
    root->addChild(snake);
    Shared<Element> cube(ClosedCube().release());
    snake->setItem(new Tool(cube));
    std::deque<Tool*> groups = snake->Explode();
    ASSERT_EQ(groups.size(), 1u);
    ASSERT_EQ(groups.front()->children.size(), 1u);
    auto* bent = dynamic_cast<Mesh*>(groups.front()->children[0]->element.get());
    ASSERT_TRUE(bent);
    auto* source = static_cast<Mesh*>(cube.get());
    Matrix34<double> M = source->Transform(1.0f);
    ASSERT_EQ(bent->verts.size(), source->verts.size());
    for (size_t k = 0; k < bent->verts.size(); ++k) {
        Vector3<double> p = Vector3<double>(source->verts[k].position) * M;
        Vector3<double> q(bent->verts[k].position);
        EXPECT_NEAR(q.z, p.z, 1e-5) << k;
        EXPECT_NEAR(std::hypot(q.x, q.y), 4 * std::hypot(p.x, p.y), 1e-4) << k;
    }
    Snake lone(Shared<Element>(new Curve({{0, 0, 0}}, false, false, 0)), 0, 1);
    EXPECT_TRUE(lone.Explode().empty());
}

// ---- files ---------------------------------------------------------------------------------

std::string Save(Scene& scene)
{
    OFile out;
    scene.saveN(out);
    return out.bytes();
}

TEST_F(ArrayTest, EveryKindRoundTripsThroughASceneFile)
{
    Array* array = makeArray(Curve::Helix(6, 2), 2);
    array->edgeMode = 0;
    auto* snake = new Snake(Shared<Element>(Curve::NGon(5, false)), 1, 2);
    snake->itemsCount = 7;
    root->addChild(snake);
    snake->setItem(new Tool(Shared<Element>(ClosedCube().release())));
    auto* ender = new Ender(Shared<Element>(Curve::Segment(3, 0)));
    root->addChild(ender);
    ender->setItem(new Tool(Shared<Element>(ClosedCube().release())));
    std::string bytes = Save(*scene);

    Scene loaded;
    LogCapture log;
    IFile in(QByteArray(bytes.data(), int(bytes.size())));
    ASSERT_TRUE(loaded.load(in)) << log.all().toStdString();
    ASSERT_EQ(loaded.root->children.size(), 3u);
    auto* a = dynamic_cast<Array*>(loaded.root->children[0]);
    auto* s = dynamic_cast<Snake*>(loaded.root->children[1]);
    auto* e = dynamic_cast<Ender*>(loaded.root->children[2]);
    ASSERT_TRUE(a && s && e);
    EXPECT_EQ(a->arrayType, 2);
    EXPECT_EQ(a->oddMatrix, array->oddMatrix);
    EXPECT_EQ(a->edgeMode, 1) << "the edge mode is not saved";
    ASSERT_TRUE(a->item && a->axis());
    EXPECT_EQ(a->item->Parent, a);
    EXPECT_EQ(a->item->objectMatrix, array->item->objectMatrix);
    EXPECT_EQ(a->axis()->verts.size(), array->axis()->verts.size());
    EXPECT_EQ(s->oddMatrix, snake->oddMatrix);
    EXPECT_EQ(s->itemsMode, 2);
    EXPECT_EQ(s->itemsCount, 7);
    ASSERT_TRUE(s->item);
    ASSERT_TRUE(e->item);
    ASSERT_TRUE(e->axis());
    EXPECT_EQ(e->axis()->bords.size(), 2u);
    EXPECT_EQ(Save(loaded), bytes);
}

TEST_F(ArrayTest, AnArrayWhoseItemIsMissingLoadsEmpty)
{
    Array* array = makeArray(Curve::NGon(4, false), 0);
    std::string bytes = Save(*scene);
    // The item's number is the last int of the array record: point it past the list.
    size_t at = bytes.find(std::string(reinterpret_cast<char const*>(&ARRAY_DATA), 4));
    ASSERT_NE(at, std::string::npos);
    size_t itemField = at + size_t(array->DataSize()) - 97 - 4;
    int missing = 99;
    bytes.replace(itemField, 4, reinterpret_cast<char const*>(&missing), 4);
    Scene loaded;
    LogCapture log;
    IFile in(QByteArray(bytes.data(), int(bytes.size())));
    loaded.load(in);
    ASSERT_EQ(loaded.root->children.size(), 1u);
    auto* a = dynamic_cast<Array*>(loaded.root->children[0]);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->item, nullptr);
    EXPECT_TRUE(log.all().contains("item is missing"));
    ToolList list;
    list.append(loaded.root, false);
    EXPECT_EQ(list.count(), 1);
}

} // namespace
} // namespace vel::test
