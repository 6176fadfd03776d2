#include "Scene/Scene.h"

#include "SceneTestSupport.h"
#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel::test {
namespace {

using M34 = Matrix34<double>;
using V3 = Vector3<double>;

M34 world(Tool const* t)
{
    M34 M;
    t->worldTransform(M, true);
    return M;
}

// root > a (object) > b > c ; a > d (object) > e (group) ; root > f (object, a's twin).
// Ids 1 to 6 in that order. a, b and f show one element, c and d another.
class SceneTreeTest : public SceneTest {
protected:
    TestElement* first = nullptr;
    TestElement* second = nullptr;
    Tool *a, *b, *c, *d, *e, *f;

    void SetUp() override
    {
        SceneTest::SetUp();
        first = new TestElement;
        second = new TestElement;
        Shared<Element> one(first), two(second);
        a = add(root, one, true, moveBy(1, 0, 0));
        b = add(a, one, false, moveBy(0, 1, 0));
        c = add(b, two, false, moveBy(0, 0, 1));
        d = add(a, two, true, moveBy(0, 2, 0));
        e = add(d, Shared<Element>(), false, moveBy(0, 0, 3));
        f = add(root, one, true, moveBy(-4, 0, 0));
        a->link(f);
        scene->toList(true, false);
    }
};

TEST_F(SceneTreeTest, IdsAreListPositionsAndResolveToTheirObjects)
{
    EXPECT_EQ(scene->list.count(), 6);
    EXPECT_FALSE(scene->dirty);
    EXPECT_EQ(scene->findObject(0), root);
    EXPECT_DEATH(scene->findObject(-1), "error_id_not_in_scene");
    EXPECT_DEATH(scene->findObject(7), "error_id_not_in_scene");

    Tool *object, *tool;
    EXPECT_TRUE(scene->findObjects(5, object, tool));
    EXPECT_EQ(object, d);
    EXPECT_EQ(tool, e);
    EXPECT_FALSE(scene->findObjects(0, object, tool));
    EXPECT_FALSE(scene->findObjects(7, object, tool));

    EXPECT_FALSE(scene->searchObject(0));
    EXPECT_EQ(scene->hit.tool, nullptr);
    ASSERT_TRUE(scene->searchObject(3));
    EXPECT_EQ(scene->hit.tool, c);
    EXPECT_EQ(scene->hit.object, a);
    EXPECT_EQ(scene->toolIndex, 2);
    EXPECT_EQ(scene->objectIndex, 0);
    EXPECT_TRUE(Near(scene->hit.toolMatrix, world(c)));
    EXPECT_TRUE(Near(scene->hit.objectMatrix, world(a)));

    Tool* parent;
    M34 toolM, objectM, parentM;
    ASSERT_TRUE(scene->searchObject(3, tool, object, parent, toolM, objectM, parentM));
    EXPECT_EQ(parent, b);
    EXPECT_TRUE(Near(parentM, world(b)));

    for (int id = 1; id <= 6; ++id)
        EXPECT_EQ(scene->findObject(id), std::vector<Tool*>({a, b, c, d, e, f})[size_t(id - 1)]);
    EXPECT_EQ(scene->findID(c), 3);
    EXPECT_EQ(scene->findID(root), 0);
    Tool* loose = new Tool;
    EXPECT_EQ(scene->findID(loose), 0);
    delete loose;
}

TEST_F(SceneTreeTest, ParentsAndHierarchiesClimbTheChaseTable)
{
    Tool* tool;
    M34 M;
    ASSERT_TRUE(scene->searchFirstParent(3, tool, M));
    EXPECT_EQ(tool, b);
    EXPECT_TRUE(Near(M, world(b)));
    ASSERT_TRUE(scene->searchFirstParent(4, tool, M)); // an object is its own top
    EXPECT_EQ(tool, d);
    EXPECT_FALSE(scene->searchFirstParent(0, tool, M));
    EXPECT_EQ(tool, nullptr);
    EXPECT_EQ(M, M34());

    std::vector<Tool*> tools;
    std::vector<M34> matrices;
    ASSERT_TRUE(scene->findHiHierarchy(3, tools, matrices, 10));
    EXPECT_EQ(tools, (std::vector<Tool*>{a, b, c}));
    ASSERT_EQ(matrices.size(), 3u);
    EXPECT_TRUE(Near(matrices[0], a->parentPivot()));
    EXPECT_TRUE(Near(matrices[2], world(c)));
    ASSERT_TRUE(scene->findHiHierarchy(3, tools, matrices, 2));
    EXPECT_EQ(tools, (std::vector<Tool*>{b, c}));
    EXPECT_FALSE(scene->findHiHierarchy(7, tools, matrices, 2));
    EXPECT_TRUE(tools.empty());
}

TEST_F(SceneTreeTest, SharedElementsAreFoundOnEveryTool)
{
    std::vector<Tool*> tools;
    EXPECT_TRUE(scene->findElement(first, tools));
    EXPECT_EQ(tools, (std::vector<Tool*>{a, b, f}));
    tools.clear();
    TestElement stray;
    EXPECT_FALSE(scene->findElement(&stray, tools));
}

TEST_F(SceneTreeTest, IdsAfterARebuildNameTheNewPositions)
{
    history().superBegin("Delete", false);
    b->remove();
    history().superEnd();
    // Before the rebuild the list still names b and c; the rebuild renumbers.
    scene->toList(true, false);
    EXPECT_EQ(scene->list.count(), 4);
    EXPECT_EQ(scene->findObject(2), d);
    EXPECT_EQ(scene->findID(d), 2);
    EXPECT_EQ(scene->findID(c), 0);
    Tool *object, *tool;
    ASSERT_TRUE(scene->findObjects(3, object, tool));
    EXPECT_EQ(tool, e);
    EXPECT_EQ(object, d);

    history().undo();
    scene->toList(true, false);
    EXPECT_EQ(scene->findID(c), 3);
    EXPECT_EQ(scene->findID(d), 4);
}

TEST_F(SceneTreeTest, SelectionFixesAHitAndReachesLinkedTwins)
{
    scene->selectObject(2);
    EXPECT_EQ(scene->selection.tool, b);
    EXPECT_EQ(scene->selection.object, a);
    std::vector<Tool*> out;
    scene->selectionObjects(out, 2, true, true, false);
    EXPECT_EQ(out, (std::vector<Tool*>{a, f}));
    out.clear();
    scene->selectionObjects(out, 2, false, false, false);
    EXPECT_EQ(out, (std::vector<Tool*>{b}));
    scene->deselect();
    EXPECT_EQ(scene->selection.tool, nullptr);
    EXPECT_EQ(scene->hit.object, nullptr);
    EXPECT_EQ(scene->objectIndex, -1);
}

TEST_F(SceneTreeTest, CopiesGoUnderTheTargetAndEachOfItsTwins)
{
    Tool* T = new Tool(Shared<Element>(new TestElement), moveBy(0, 0, 7));
    std::vector<M34> pivots{moveBy(1, 0, 0), moveBy(2, 0, 0)};
    scene->dirty = false;
    auto copies = scene->addObjectsOnID(3, T, M34::Scale(2), pivots, 2, true, false);
    EXPECT_TRUE(scene->dirty);
    ASSERT_EQ(copies.size(), 4u);
    EXPECT_EQ(copies[0]->Parent, a);
    EXPECT_EQ(copies[1]->Parent, a);
    EXPECT_EQ(copies[2]->Parent, f);
    EXPECT_EQ(copies[3]->Parent, f);
    EXPECT_TRUE(Near(copies[1]->objectMatrix, T->objectMatrix * M34::Scale(2)));
    EXPECT_EQ(copies[1]->pivotMatrix, pivots[1]);
    EXPECT_EQ(copies[0]->element, T->element);

    EXPECT_EQ(scene->addObjectsOnID(3, T, M34(), pivots, 3, false, false).front()->Parent, c);
    EXPECT_EQ(scene->addObjectsOnID(3, T, M34(), pivots, 1, false, false).front()->Parent, root);
    EXPECT_EQ(scene->addObjectsOnID(99, T, M34(), pivots, 2, false, false).front()->Parent, root);
    EXPECT_TRUE(scene->addObjectsOnID(3, nullptr, M34(), pivots, 2, false, false).empty());
    EXPECT_EQ(scene->addObjectsOnParent(T, e, M34(), pivots).back()->Parent, e);
    EXPECT_TRUE(validate(root).empty());
    delete T;
}

TEST_F(SceneTreeTest, TheTemporaryListHangsUnderTheLastHit)
{
    Tool* T = new Tool(Shared<Element>(new TestElement), moveBy(0, 0, 7));
    std::vector<M34> one{M34()};
    scene->searchObject(3);
    scene->addObjectToList(T, M34(), one, 2, false);
    scene->addObjectToList(T, M34(), one, 3, false);
    scene->addObjectToList(T, M34(), one, 1, false);
    scene->addObjectToList(T, M34(), one, 0, false); // nothing with a hit
    scene->addObjectToList(nullptr, M34(), one, 1, false);
    ToolList const& temp = scene->temporary;
    ASSERT_EQ(temp.count(), 3);
    EXPECT_EQ(temp.indices[0], 0); // at a
    EXPECT_TRUE(Near(temp.matrices[0], T->transform() * world(a)));
    EXPECT_EQ(temp.indices[1], 2); // at c
    EXPECT_TRUE(Near(temp.matrices[1], T->transform() * world(c)));
    EXPECT_EQ(temp.indices[2], -1);
    EXPECT_TRUE(Near(temp.matrices[2], T->transform()));
    scene->deselect();
    scene->addObjectToList(T, M34(), one, 0, false); // without a hit: no parent
    EXPECT_EQ(temp.count(), 4);
    scene->clearTemporary();
    EXPECT_EQ(temp.count(), 0);
    delete T;
}

TEST_F(SceneTreeTest, ListingForPickingMovesTheSelectionToTheTemporaryList)
{
    b->select(false, false);
    scene->toList(true, true);
    EXPECT_EQ(scene->list.count(), 4); // without b and c
    ASSERT_EQ(scene->temporary.count(), 2);
    EXPECT_EQ(scene->temporary.items[0].tool, b);
    EXPECT_TRUE(Near(scene->temporary.matrices[1], world(c)));
}

TEST_F(SceneTreeTest, FitBoxesEachSharedElementOnceAndEveryToolThatShowsIt)
{
    // Each element's own mapping counts too: a, b and f show `first` at half size.
    first->scale = 2;
    first->center = Vector3<float>(1, 0, 0);
    AABB box = scene->fit(3);
    EXPECT_EQ(first->boxes, 1);
    EXPECT_EQ(second->boxes, 1);
    AABB expected;
    for (Tool* t : {a, b, c, d, f}) {
        AABB own;
        own.add(V3(-0.5, -0.5, -0.5));
        own.add(V3(0.5, 0.5, 0.5));
        expected.add(own.transform(t->element->Transform(1)).transform(world(t)));
    }
    EXPECT_TRUE(Near(box.min, expected.min));
    EXPECT_TRUE(Near(box.max, expected.max));
    EXPECT_TRUE(Near(scene->centre, expected.center()));
    EXPECT_NEAR(scene->radius, expected.size().length() / 2, 1e-12);
}

TEST_F(SceneTest, AnEmptySceneFitsTheFallbackCube)
{
    AABB box = scene->fit(2.5);
    EXPECT_EQ(box.min, V3(-2.5, -2.5, -2.5));
    EXPECT_EQ(box.max, V3(2.5, 2.5, 2.5));
    EXPECT_EQ(scene->centre, V3());
    EXPECT_EQ(scene->radius, 2.5);
}

TEST_F(SceneTest, AppendAdoptsTheOtherScenesObjectsAndDropsItsShell)
{
    add(root, Shared<Element>(), true);
    auto* other = new Scene;
    Tool* x = add(other->root, Shared<Element>(new TestElement), true);
    Tool* y = add(x, Shared<Element>());
    Tool* z = add(other->root, Shared<Element>(), true);
    size_t steps = history().commands.size();
    int tools = Tool::COUNT;
    scene->append(other);
    EXPECT_EQ(Tool::COUNT, tools - 1); // only the other root went
    EXPECT_EQ(root->children.size(), 3u);
    EXPECT_EQ(x->Parent, root);
    EXPECT_EQ(y->Parent, x);
    EXPECT_EQ(z->Parent, root);
    EXPECT_EQ(history().commands.size(), steps);
    EXPECT_TRUE(scene->dirty);
    EXPECT_TRUE(validate(root).empty());
}

TEST_F(SceneTest, PrepareSaveReachesEveryElementOnceUIToolsIncluded)
{
    auto* shared = new TestElement;
    auto* own = new TestElement;
    Shared<Element> one(shared);
    Tool* a = add(root, one, true);
    add(a, one);
    Tool* boxed = new Tool(Shared<Element>(own));
    add(boxed, one);
    Scene::UITools.push_back(UITool{M34(), 0x10000001, boxed});
    scene->prepareSave();
    EXPECT_EQ(shared->saves, 1);
    EXPECT_EQ(own->saves, 1);
    delete boxed;
}

TEST_F(SceneTest, InitReplacesTheTreeWithoutRecordingAndTimerSetsTheClock)
{
    auto* element = new TestElement;
    add(root, Shared<Element>(element), true);
    scene->timer(4.5);
    EXPECT_EQ(Tool::GlobalTime, 4.5);
    EXPECT_EQ(element->lastTime, 4.5);
    scene->toList(true, false);
    scene->selectObject(1);
    size_t steps = history().commands.size();
    scene->init(false);
    EXPECT_EQ(history().commands.size(), steps);
    EXPECT_NE(scene->root, nullptr);
    EXPECT_TRUE(scene->root->children.empty());
    EXPECT_EQ(scene->list.count(), 0);
    EXPECT_TRUE(scene->list.sorted[ToolList::DRAW_OPAQUE].empty());
    EXPECT_EQ(scene->selection.tool, nullptr);
    EXPECT_TRUE(scene->dirty);
    EXPECT_EQ(Element::COUNT, 0);
    scene->init(true);
    EXPECT_EQ(scene->root, nullptr);
}

} // namespace
} // namespace vel::test
