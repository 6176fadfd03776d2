#include "Scene/Tool.h"

#include "OpenGL/Shader.h"
#include "Scene/Commands/CommandRegisterToolCreation.h"
#include "Scene/SuperCommand.h"
#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vel::test {
namespace {

using M34 = Matrix34<double>;
using V3 = Vector3<double>;

M34 turn(V3 const& axis, double angle)
{
    return M34(Matrix3<double>::RotationAroundUnitAxis(axis.normalize(), std::sin(angle), std::cos(angle)));
}

using Kind = KindTool;

// ---- construction --------------------------------------------------------------------

TEST_F(TreeTest, ANewToolIsALoneRingWithTheNextId)
{
    int before = Tool::COUNT;
    Tool* t = add(root);
    EXPECT_EQ(Tool::COUNT, before + 1);
    EXPECT_EQ(t->linkNext, t);
    EXPECT_EQ(t->linksCount(), 1);
    EXPECT_EQ(add(root)->id, t->id + 1);
}

TEST_F(TreeTest, CreationIsAClosedGroupHoldingOneRegistration)
{
    Tool* t = new Tool;
    ASSERT_EQ(history().commands.size(), 1u);
    auto* group = static_cast<SuperCommand*>(history().commands[0]);
    ASSERT_TRUE(group->isSuper());
    EXPECT_TRUE(group->isFinished());
    ASSERT_EQ(group->commands.size(), 1u);
    EXPECT_EQ(group->commands[0]->type, CommandRegisterToolCreation::TYPE);
    EXPECT_EQ(static_cast<CommandRegisterToolCreation*>(group->commands[0])->tool, t);
    EXPECT_EQ(Command::depth, 0);
    root->addChild(t);
}

// ---- parents and children ------------------------------------------------------------

TEST_F(TreeTest, AddToParentAppendsRecordsAndUndoes)
{
    Tool* a = add(root);
    Tool* t = new Tool;
    a->addChild(t);
    EXPECT_EQ(t->Parent, a);
    EXPECT_EQ(a->children.back(), t);
    EXPECT_TRUE(a->isChild(t));
    history().undo();
    EXPECT_EQ(t->Parent, nullptr);
    EXPECT_TRUE(a->children.empty());
    history().redo();
    EXPECT_EQ(t->Parent, a);
    EXPECT_EQ(validate(root), std::vector<std::string>());
}

// A child takes its parent's object state when it joins.
TEST_F(TreeTest, AChildTakesTheObjectStateOfItsParent)
{
    Tool* object = addObject(root);
    Tool* child = add(object);
    EXPECT_TRUE(child->isObject());
    Tool* top = add(root);
    EXPECT_FALSE(top->isObject()) << "the root is no object";
    Tool* grandchild = add(add(top));
    top->setObjectHierarchy(true);
    EXPECT_TRUE(grandchild->isObject());
}

TEST_F(TreeTest, AddToParentWithAPivotSetsItAndUndoGivesTheOldOneBack)
{
    Tool* t = new Tool(Shared<Element>(), M34(), moveBy(1, 2, 3));
    t->addToParent(root, moveBy(4, 5, 6));
    EXPECT_EQ(t->pivotMatrix, moveBy(4, 5, 6));
    history().undo();
    history().undo();
    EXPECT_EQ(t->Parent, nullptr);
    EXPECT_EQ(t->pivotMatrix, moveBy(1, 2, 3));
    history().redo();
    history().redo();
    EXPECT_EQ(t->pivotMatrix, moveBy(4, 5, 6));
}

TEST_F(TreeTest, SubFromParentKeepsThePositionForUndo)
{
    Tool* a = add(root);
    Tool* b = add(root);
    Tool* c = add(root);
    gPreviouslyAddedObject = b;
    EXPECT_EQ(b->subFromParent(), root);
    EXPECT_EQ(gPreviouslyAddedObject, nullptr);
    EXPECT_EQ(b->Parent, nullptr);
    EXPECT_EQ(root->children, (std::vector<Tool*>{a, c}));
    history().undo();
    EXPECT_EQ(root->children, (std::vector<Tool*>{a, b, c}));
    EXPECT_EQ(b->Parent, root);
    history().redo();
    EXPECT_EQ(root->children, (std::vector<Tool*>{a, c}));
    history().undo();
    // Without a parent nothing happens and nothing is recorded.
    {
        Tool t;
        size_t steps = history().commands.size();
        EXPECT_EQ(t.subFromParent(), nullptr);
        EXPECT_EQ(history().commands.size(), steps);
    }
}

TEST_F(TreeTest, SetChildOverwritesAPosition)
{
    Tool* a = add(root);
    Tool* b = new Tool;
    root->setChild(0, b);
    EXPECT_EQ(root->children[0], b);
    EXPECT_EQ(b->Parent, root);
    a->Parent = nullptr; // no longer listed: the caller owns it again
    delete a;
}

TEST_F(TreeTest, AnItemLeavesItsSlotUndoably)
{
    auto* holder = new ItemHolder;
    root->addChild(holder);
    Tool* item = new Tool;
    item->Parent = holder;
    holder->item = item;
    EXPECT_EQ(item->subFromParent(), holder);
    EXPECT_EQ(holder->item, nullptr);
    EXPECT_EQ(item->Parent, nullptr);
    history().undo();
    EXPECT_EQ(holder->item, item);
    EXPECT_EQ(item->Parent, holder);
    history().redo();
    EXPECT_EQ(holder->item, nullptr);
    EXPECT_EQ(item->Parent, nullptr);
    history().undo();
    // The slot is no child: take the item out without history before the holder goes.
    History::Pause pause;
    item->subFromParent();
    delete item;
}

// remove: the subtree leaves, the command owns it, undo of the group puts it all back.
TEST_F(TreeTest, RemoveTakesTheSubtreeOutAndUndoRestoresTreeAndRing)
{
    Tool* a = add(root);
    Tool* b = add(root);
    Tool* c = add(b);
    Tool* d = add(b);
    Tool* e = add(root);
    b->link(e);
    c->link(a);
    auto before = snapshot(root);
    int count = Tool::COUNT;

    history().superBegin("Delete", false);
    b->remove();
    history().superEnd();
    EXPECT_EQ(root->children, (std::vector<Tool*>{a, e}));
    EXPECT_EQ(Tool::COUNT, count) << "removed tools live on in their commands";
    EXPECT_FALSE(e->linked());
    EXPECT_FALSE(a->linked());
    EXPECT_TRUE(b->children.empty());
    EXPECT_EQ(c->Parent, nullptr);
    EXPECT_EQ(validate(root), std::vector<std::string>());

    history().undo();
    EXPECT_EQ(snapshot(root), before);
    EXPECT_EQ(d->Parent, b);
    history().redo();
    EXPECT_EQ(root->children, (std::vector<Tool*>{a, e}));
    history().clear();
    EXPECT_EQ(Tool::COUNT, count - 3) << "the deletion stands once its command is gone";
}

TEST_F(TreeTest, WithRecordingOffNothingIsRecordedAndRemoveDestroysAtOnce)
{
    history().active = false;
    Tool* a = add(root);
    add(a);
    int count = Tool::COUNT;
    a->remove();
    history().active = true;
    EXPECT_TRUE(history().commands.empty());
    EXPECT_EQ(Tool::COUNT, count - 2);
    EXPECT_TRUE(root->children.empty());
}

TEST_F(TreeTest, ClearChildrenRemovesEveryChild)
{
    Tool* a = add(root);
    add(a);
    add(a);
    a->clearChildren();
    EXPECT_TRUE(a->children.empty());
    history().jumpTo(-1);
    history().jumpTo(1000);
    EXPECT_TRUE(a->children.empty());
}

TEST_F(TreeTest, DestroyingAToolDestroysItsChildrenAndLeavesParentAndRing)
{
    Tool* a = add(root);
    Tool* b = add(root);
    Tool* c = add(a);
    add(c);
    b->link(a);
    int count = Tool::COUNT;
    size_t steps = history().commands.size();
    delete a;
    EXPECT_EQ(Tool::COUNT, count - 3);
    EXPECT_EQ(root->children, (std::vector<Tool*>{b}));
    EXPECT_FALSE(b->linked());
    EXPECT_EQ(history().commands.size(), steps) << "a teardown is no step";
    EXPECT_TRUE(history().active);
    history().clear(); // its steps referred to the destroyed tools
}

TEST_F(TreeTest, StickySelectionIsResetForARemovedTool)
{
    static Tool* reset = nullptr;
    gResetStickySelection = [](Tool* t) { reset = t; };
    Tool* a = add(root);
    a->remove();
    gResetStickySelection = nullptr;
    EXPECT_EQ(reset, a);
}

using TreeDeathTest = TreeTest;

TEST_F(TreeDeathTest, MisuseOfParentsAsserts)
{
    Tool* a = add(root);
    Tool* b = add(a);
    EXPECT_DEATH(a->addToParent(nullptr), "Assertion failed: P\n");
    EXPECT_DEATH(a->addChild(nullptr), "Assertion failed: T\n");
    EXPECT_DEATH(root->subChild(b), "Assertion failed: T->Parent == this");
    EXPECT_DEATH(a->addToParent(b), "leaves its parent");
    EXPECT_DEATH(root->addToParent(a), "the root has no parent");
    EXPECT_DEATH(root->remove(), "the scene owns the root");
    EXPECT_DEATH(root->setChild(5, b), "position >= 0");
}

TEST_F(TreeDeathTest, ACycleIsRefused)
{
    Tool* a = add(root);
    Tool* b = add(a);
    a->subFromParent();
    EXPECT_DEATH(a->addToParent(b), "its own ancestor");
    EXPECT_DEATH(a->addToParent(a), "its own ancestor");
    root->addChild(a);
}

// ---- links ---------------------------------------------------------------------------

TEST_F(TreeTest, LinkJoinsRingsOnceAndUndoSplitsThem)
{
    Tool* a = add(root);
    Tool* b = add(root);
    Tool* c = add(root);
    a->link(b);
    c->link(a);
    EXPECT_EQ(a->linksCount(), 3);
    EXPECT_TRUE(c->linked(b));
    EXPECT_EQ(validate(root), std::vector<std::string>());
    history().undo();
    EXPECT_EQ(c->linksCount(), 1);
    EXPECT_TRUE(a->linked(b));
    history().undo();
    EXPECT_FALSE(a->linked());
    history().redo();
    history().redo();
    EXPECT_EQ(b->linksCount(), 3);
    // Linking members of one ring changes nothing and records nothing.
    size_t steps = history().commands.size();
    Tool* next = a->linkNext;
    b->link(c);
    a->link(a);
    EXPECT_EQ(history().commands.size(), steps);
    EXPECT_EQ(a->linkNext, next);
    EXPECT_EQ(a->linksCount(), 3);
}

TEST_F(TreeTest, UnlinkLeavesTheRestClosedAndUndoPutsTheToolBackInPlace)
{
    Tool* t[4];
    for (Tool*& x : t)
        x = add(root);
    t[0]->link(t[1]);
    t[1]->link(t[2]);
    t[2]->link(t[3]);
    auto before = snapshot(root);
    Tool* prev = t[2]->previous();
    EXPECT_EQ(prev->linkNext, t[2]);
    t[2]->unlink(false);
    EXPECT_EQ(t[2]->linksCount(), 1);
    EXPECT_EQ(t[0]->linksCount(), 3);
    EXPECT_FALSE(t[0]->linked(t[2]));
    EXPECT_EQ(validate(root), std::vector<std::string>());
    history().undo();
    EXPECT_EQ(snapshot(root), before);
    // A recursive unlink goes through the children.
    Tool* child = add(t[1]);
    child->link(t[3]);
    t[1]->unlink(true);
    EXPECT_FALSE(t[1]->linked());
    EXPECT_FALSE(child->linked());
    EXPECT_EQ(t[3]->linksCount(), 3);
}

TEST_F(TreeTest, RingQueriesListMembersByKind)
{
    Tool* a = add(root);
    Tool* b = addObject(root);
    Tool* c = addObject(root);
    a->link(b);
    a->link(c);
    std::vector<Tool*> all;
    a->findAllLinks(all);
    EXPECT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0], a);
    EXPECT_EQ(a->findAllObjectLinks().size(), 2u);
    c->select(false, false);
    std::vector<Tool*> selected;
    a->findAllLinked(selected, true);
    EXPECT_EQ(selected, std::vector<Tool*>{c});
    selected.clear();
    a->findAllLinked(selected, false);
    EXPECT_EQ(selected, std::vector<Tool*>{a});
    std::vector<Tool*> tools, previous;
    root->children[0]->findLinks(tools, previous);
    EXPECT_EQ(tools, std::vector<Tool*>{a});
    EXPECT_EQ(previous[0]->linkNext, a);
}

// A corrupt ring ends the process instead of hanging it.
TEST_F(TreeDeathTest, ARingThatDoesNotCloseAsserts)
{
    Tool* a = add(root);
    Tool* b = add(root);
    a->linkNext = b;
    EXPECT_DEATH(a->linksCount(), "the ring of links does not close");
    EXPECT_DEATH(a->previous(), "the ring of links does not close");
    a->linkNext = a;
}

// ---- transforms ----------------------------------------------------------------------

TEST_F(TreeTest, WorldTransformChainsFromLeafToRoot)
{
    Tool* a = add(root, moveBy(1, 0, 0), moveBy(0, 2, 0));
    Tool* b = add(a, turn(V3(0, 0, 1), M_PI / 2), moveBy(0, 0, 3));
    EXPECT_EQ(a->transform(), moveBy(1, 2, 0));
    // (1,0,0) turns to (0,1,0), then b's pivot, then a's placement.
    EXPECT_TRUE(near(worldPoint(b, V3(1, 0, 0)), V3(1, 3, 3)));
    EXPECT_TRUE(near(b->worldPivot(), a->transform()));
    EXPECT_TRUE(near(V3() * b->parentPivot(), V3(1, 2, 3)));
    M34 M = moveBy(9, 9, 9);
    b->worldTransform(M, false);
    EXPECT_TRUE(near(V3() * M, V3(-8, 11, 12)));
    // Moving the object carries its children.
    {
        Tool* moved = add(root, moveBy(1, 0, 0), moveBy(0, 2, 0));
        Tool* child = add(moved, M34(), moveBy(0, 0, 3));
        EXPECT_TRUE(near(worldPoint(child, V3()), V3(1, 2, 3)));
        moved->transformObject(turn(V3(0, 0, 1), M_PI / 2), false, false);
        EXPECT_TRUE(near(worldPoint(child, V3()), V3(0, 3, 3)));
        moved->align(moveBy(5, 0, 0), false, false);
        EXPECT_TRUE(near(worldPoint(child, V3()), V3(5, 3, 3)));
    }
}

TEST_F(TreeTest, TransformPivotMovesThePivotAndNotTheObject)
{
    Tool* a = add(root, turn(V3(1, 1, 0), 0.4) * moveBy(1, 2, 3), moveBy(0, 2, 0));
    Tool* c = add(a, M34(), moveBy(0, 0, 3));
    M34 before = a->transform();
    V3 child = worldPoint(c, V3(1, 1, 1));
    M34 M = turn(V3(0, 1, 0), 0.7) * moveBy(-2, 0, 1);
    a->transformPivot(M, false, false);
    EXPECT_TRUE(near(a->transform(), before));
    EXPECT_TRUE(near(worldPoint(c, V3(1, 1, 1)), child));
    EXPECT_TRUE(near(a->pivotMatrix, M * moveBy(0, 2, 0)));
    a->transformObjectPivot(moveBy(0, 1, 0), false, false);
    EXPECT_TRUE(near(a->pivotMatrix, moveBy(0, 1, 0) * M * moveBy(0, 2, 0)));
}

// The element moves by M in its own frame; the children keep their place in the world.
TEST_F(TreeTest, TransformElementMovesTheElementAndNotTheChildren)
{
    Tool* a = add(root, M34::Scale(2), moveBy(0, 2, 0));
    Tool* c = add(a, turn(V3(0, 0, 1), 0.3), moveBy(1, 0, 0));
    V3 child = worldPoint(c, V3(0.5, 0, 0));
    EXPECT_TRUE(near(worldPoint(a, V3(1, 0, 0)), V3(2, 2, 0)));
    a->transformElement(moveBy(0, 0, 1), false, false);
    EXPECT_TRUE(near(worldPoint(a, V3(1, 0, 0)), V3(2, 2, 2)));
    EXPECT_TRUE(near(worldPoint(c, V3(0.5, 0, 0)), child));
    a->transformElement(turn(V3(1, 0, 0), 1.1), false, false);
    EXPECT_TRUE(near(worldPoint(c, V3(0.5, 0, 0)), child));
}

// Every transforming operation reaches the ring's objects, with `sameParent` only those
// under the same parent, and refuses a matrix without an inverse, leaving all in place.
TEST_F(TreeTest, RingTransformsReachObjectTwinsAndRefuseSingularMatrices)
{
    using Op = void (Tool::*)(M34 const&, bool, bool);
    struct Case {
        const char* what;
        Op op;
        bool axis; // the tools have a rotation axis along the turn
    } cases[] = {
        {"object", &Tool::transformObject, false},
        {"align", &Tool::align, false},
        {"element", &Tool::transformElement, false},
        {"pivot", &Tool::transformPivot, false},
        {"object pivot", &Tool::transformObjectPivot, false},
        {"free rotation", &Tool::constrainedRotateObject, false},
        {"rotation about an axis", &Tool::constrainedRotateObject, true},
        {"element rotation about an axis", &Tool::constrainedRotateElement, true},
    };
    M34 M = turn(V3(0, 0, 1), 0.5) * moveBy(1, 2, 0);
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        Tool* group = add(root);
        Tool* a = addObject(group);
        Tool* sibling = addObject(group);
        Tool* twin = addObject(root);
        Tool* plain = add(root);
        for (Tool* t : {a, sibling, twin, plain})
            t->rotationAxis = c.axis ? Vector3<float>(0, 0, 1) : Vector3<float>();
        a->link(sibling);
        a->link(twin);
        a->link(plain);
        auto placed = [](Tool* x, Tool* y) {
            return near(x->objectMatrix, y->objectMatrix) && near(x->pivotMatrix, y->pivotMatrix);
        };
        (a->*c.op)(M, true, false);
        EXPECT_FALSE(placed(a, plain));
        EXPECT_TRUE(placed(twin, a));
        EXPECT_TRUE(near(plain->objectMatrix, M34()) && near(plain->pivotMatrix, M34())) << "not an object";
        (a->*c.op)(M, true, true);
        EXPECT_TRUE(placed(sibling, a));
        EXPECT_FALSE(placed(twin, a)) << "another parent";
        auto before = snapshot(root);
        for (M34 bad : {M34::Scale(0), M34::Scale(std::nan(""))})
            (a->*c.op)(bad, true, false);
        EXPECT_EQ(difference(snapshot(root), before), "");
    }
}

TEST_F(TreeTest, ElementTransformPrecedesTheToolsOwn)
{
    auto element = makeElement();
    element->center = Vector3<float>(1, 0, 0);
    element->scale = 2;
    Tool* t = new Tool(element, moveBy(0, 0, 5));
    root->addChild(t);
    // Own point (3,0,0) is (1,0,0) in the unit shape, then the tool's placement.
    EXPECT_TRUE(near(V3(3, 0, 0) * t->element_transform(), V3(1, 0, 5)));
    Tool* group = add(root, moveBy(0, 0, 5));
    EXPECT_EQ(group->element_transform(), group->transform());
}

TEST_F(TreeTest, TransformRenderTakesTheElementsSizeAndFacesTheViewerInModesTwoAndThree)
{
    auto element = makeElement();
    element->scale = 2;
    Tool* t = new Tool(element, M34::Scale(3) * moveBy(0, 0, 5));
    root->addChild(t);
    Matrix34<double> const saved = Shader::ModelViewMatrix;
    Shader::ModelViewMatrix = M34(Matrix3<double>::Rotation(0.3, 0.7, 0.0) * 2.0, V3(1, 2, 3));
    for (unsigned char mode : {0, 1, 2, 3}) {
        t->changeOrientation(mode, false, false);
        M34 R = t->transformRender(t->transform());
        EXPECT_TRUE(near(V3(0, 0, 0) * R, V3(0, 0, 5))) << "mode " << int(mode) << ": the place is kept";
        if (mode < 2) {
            EXPECT_TRUE(near(V3(2, 0, 0) * R, V3(3, 0, 5))) << "mode " << int(mode);
            continue;
        }
        // Facing: the view undoes the drawn rotation, leaving the size (3 / 2) times the view's (2).
        Matrix3<double> seen = R.linear() * Shader::ModelViewMatrix.linear();
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(seen(r, c), r == c ? 3.0 : 0.0, 1e-9) << "mode " << int(mode);
    }
    Shader::ModelViewMatrix = saved;
}

// ---- constrained moves and rotations -------------------------------------------------

// A free tool takes the whole matrix; an axis keeps only the move along it (t dot a times a,
// a not unit) or the turn about it, with the scale taken out first.
TEST_F(TreeTest, ConstrainedChangesKeepWhatTheirAxisAllows)
{
    using Op = void (Tool::*)(M34 const&, bool, bool);
    using F3 = Vector3<float>;
    M34 const any = turn(V3(1, 2, 3), 0.3) * moveBy(1, 0, 0), up = moveBy(0, 0, 2);
    struct Case {
        char const* what;
        Op op;
        F3 translationAxis, rotationAxis;
        M34 pivot, M, object, pivotAfter;
    } const cases[] = {
        {"free move", &Tool::constrainedMoveObject, {}, {}, M34(), moveBy(1, 2, 3), moveBy(1, 2, 3), M34()},
        {"move along an axis", &Tool::constrainedMoveObject, {0, 0, 2}, {}, M34(), moveBy(1, 2, 3), moveBy(0, 0, 12), M34()},
        {"free rotation", &Tool::constrainedRotateObject, {}, {}, M34(), any, any, M34()},
        {"turn across the axis", &Tool::constrainedRotateObject, {}, {0, 0, 3}, M34(), turn(V3(1, 0, 0), 0.7), M34(), M34()},
        {"scaled turn about the axis", &Tool::constrainedRotateObject, {}, {0, 0, 3}, M34(),
         turn(V3(0, 0, 1), 0.5) * M34::Scale(3), turn(V3(0, 0, 1), 0.5), M34()},
        {"pivot turn about the axis", &Tool::constrainedRotateObjectPivot, {}, {0, 0, 1}, up, turn(V3(0, 0, 1), 0.25),
         M34(), turn(V3(0, 0, 1), 0.25) * up},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        Tool* t = add(root, M34(), c.pivot);
        t->translationAxis = c.translationAxis;
        t->rotationAxis = c.rotationAxis;
        (t->*c.op)(c.M, false, false);
        EXPECT_TRUE(near(t->objectMatrix, c.object));
        EXPECT_TRUE(near(t->pivotMatrix, c.pivotAfter));
    }
    // Constrained moves and turns of the element leave the children where they are.
    Tool* shape = add(root);
    Tool* child = add(shape, M34(), moveBy(1, 1, 1));
    shape->translationAxis = F3(1, 0, 0);
    shape->constrainedMoveElement(moveBy(3, 4, 5), false, false);
    EXPECT_TRUE(near(worldPoint(shape, V3()), V3(3, 0, 0)));
    EXPECT_TRUE(near(worldPoint(child, V3()), V3(1, 1, 1)));
    Tool* a = add(root);
    Tool* c = add(a, M34(), moveBy(1, 0, 0));
    a->rotationAxis = F3(0, 1, 0);
    a->constrainedRotateElement(turn(V3(0, 1, 0), 0.4), false, false);
    EXPECT_TRUE(near(worldPoint(c, V3()), V3(1, 0, 0)));
    EXPECT_TRUE(near(worldPoint(a, V3(1, 0, 0)), V3(1, 0, 0) * turn(V3(0, 1, 0), 0.4)));
}

TEST_F(TreeTest, LinkedTwinsMoveByTheCubeRootOfTheirScaleRatio)
{
    Tool* a = addObject(root);
    Tool* big = addObject(root, M34::Scale(2));
    Tool* axial = addObject(root, M34::Scale(0.5));
    axial->translationAxis = Vector3<float>(1, 1, 0);
    a->link(big);
    a->link(axial);
    a->constrainedMoveObject(moveBy(1, 0, 0), true, false);
    EXPECT_TRUE(near(a->objectMatrix.translation(), V3(1, 0, 0)));
    EXPECT_TRUE(near(big->objectMatrix.translation(), V3(2, 0, 0)));
    EXPECT_TRUE(near(axial->objectMatrix.translation(), V3(0.5, 0.5, 0)));
}

// Meshing gears: ratios of plus or minus one over the teeth.
TEST_F(TreeTest, ATwinTurnsByTheRatioOfTheMultipliersAboutItsOwnAxis)
{
    Tool* small = addObject(root);
    Tool* large = addObject(root);
    Tool* tilted = addObject(root);
    small->rotationAxis = Vector3<float>(0, 0, 1);
    small->rotationMultiplier = 1.0f / 10;
    large->rotationMultiplier = -1.0f / 20;
    tilted->rotationAxis = Vector3<float>(1, 0, 0);
    small->link(large);
    small->link(tilted);
    small->constrainedRotateObject(turn(V3(0, 0, 1), 0.6), true, false);
    EXPECT_TRUE(near(small->objectMatrix, turn(V3(0, 0, 1), 0.6)));
    EXPECT_TRUE(near(large->objectMatrix, turn(V3(0, 0, 1), -0.3), 1e-6));
    EXPECT_TRUE(near(tilted->objectMatrix, turn(V3(1, 0, 0), 6.0), 1e-5));
}

// ---- cloning -------------------------------------------------------------------------

TEST_F(TreeTest, ACloneCopiesEverythingButPlacementAndJoinsTheRing)
{
    auto element = makeElement();
    Tool* a = new Tool(element, moveBy(1, 0, 0), moveBy(0, 1, 0));
    root->addChild(a);
    a->flags |= Tool::FLAG_TRANSPARENT | Tool::FLAG_ORIENTATION | Tool::FLAG_GEAR_PARTNER |
                Tool::FLAG_SELECTED | Tool::FLAG_HIGHLIGHTED;
    a->flags &= ~Tool::FLAG_VISIBLE;
    a->rotationAxis = Vector3<float>(0, 1, 0);
    a->translationAxis = Vector3<float>(1, 0, 0);
    a->rotationMultiplier = 0.5f;
    a->speed = 2;
    a->delay = 3;
    a->record = 7;
    a->code["FragmentMainCode"] = "oColorAlpha = vec4(1);";
    a->fIncludes = {3};
    a->active = true;

    Tool* copy = a->cloneTool(true);
    EXPECT_EQ(copy->element, element);
    EXPECT_EQ(copy->objectMatrix, a->objectMatrix);
    EXPECT_EQ(copy->pivotMatrix, a->pivotMatrix);
    EXPECT_EQ(copy->Parent, nullptr);
    EXPECT_EQ(copy->flags, Tool::FLAG_VISIBLE | Tool::FLAG_OBJECT | Tool::FLAG_TRANSPARENT |
                               Tool::FLAG_ORIENTATION | Tool::FLAG_GEAR_PARTNER);
    EXPECT_EQ(copy->rotationAxis, a->rotationAxis);
    EXPECT_EQ(copy->translationAxis, a->translationAxis);
    EXPECT_EQ(copy->rotationMultiplier, 0.5f);
    EXPECT_EQ(copy->speed, 2.0f);
    EXPECT_EQ(copy->delay, 3.0f);
    EXPECT_EQ(copy->record, 7.0);
    EXPECT_EQ(copy->code, a->code);
    EXPECT_EQ(copy->fIncludes, a->fIncludes);
    EXPECT_TRUE(copy->active);
    EXPECT_TRUE(a->linked(copy));
    EXPECT_FALSE(a->isObject()) << "the original's object state is restored";
    EXPECT_FALSE(a->clonable());
    EXPECT_EQ(a->clone, nullptr);
    root->addChild(copy);

    Tool* flat = a->cloneTool(false);
    EXPECT_EQ(flat->pivotMatrix, M34());
    root->addChild(flat);
}

TEST_F(TreeTest, CloneObjectBakesThePlacementIntoTheObjectMatrix)
{
    Tool* a = add(root, moveBy(1, 0, 0), turn(V3(0, 0, 1), 0.5));
    Tool* copy = a->cloneObject(moveBy(0, 0, 1), moveBy(0, 2, 0));
    EXPECT_TRUE(near(copy->objectMatrix, moveBy(1, 0, 0) * turn(V3(0, 0, 1), 0.5) * moveBy(0, 0, 1)));
    EXPECT_EQ(copy->pivotMatrix, moveBy(0, 2, 0));
    root->addChild(copy);
}

TEST_F(TreeTest, ACloneOfAHierarchyHasTheSamePointsAndLinksAmongItsCopies)
{
    Tool* g = add(root, moveBy(1, 2, 3));
    Tool* a = add(g, turn(V3(0, 1, 0), 0.3), moveBy(1, 0, 0));
    Tool* b = add(a, M34::Scale(2), moveBy(0, 1, 0));
    add(g);
    Tool* copy = g->cloneTool(true);
    root->addChild(copy);
    ASSERT_EQ(copy->children.size(), 2u);
    Tool* a2 = copy->children[0];
    ASSERT_EQ(a2->children.size(), 1u);
    Tool* b2 = a2->children[0];
    EXPECT_TRUE(near(worldPoint(b2, V3(1, 1, 1)), worldPoint(b, V3(1, 1, 1))));
    EXPECT_TRUE(b->linked(b2));
    EXPECT_TRUE(a->linked(a2));
    EXPECT_FALSE(a->linked(b));
    EXPECT_EQ(validate(root), std::vector<std::string>());
    // Two linked members of a copied group: the copies are linked to each other and to the
    // originals, all in one ring.
    {
        Tool* group = add(root);
        Tool* first = add(group);
        Tool* second = add(group);
        first->link(second);
        Tool* copied = group->cloneTool(true);
        root->addChild(copied);
        Tool* firstCopy = copied->children[0];
        Tool* secondCopy = copied->children[1];
        EXPECT_TRUE(firstCopy->linked(secondCopy));
        EXPECT_TRUE(firstCopy->linked(first));
        EXPECT_TRUE(secondCopy->linked(second));
        EXPECT_EQ(first->linksCount(), 4);
    }
}

// A clone in a group is one step; taken back and discarded, the copies are destroyed.
TEST_F(TreeTest, AnUndoneCloneIsDestroyedWhenItsStepIsDiscarded)
{
    Tool* g = add(root);
    add(g);
    add(g);
    auto before = snapshot(root);
    int count = Tool::COUNT;
    history().superBegin("Clone", false);
    Tool* copy = g->cloneTool(true);
    root->addChild(copy);
    history().superEnd();
    EXPECT_EQ(Tool::COUNT, count + 3);
    history().undo();
    EXPECT_EQ(snapshot(root), before);
    EXPECT_EQ(Tool::COUNT, count + 3);
    history().cleanup();
    EXPECT_EQ(Tool::COUNT, count);
}

// ---- listing and searching -----------------------------------------------------------

TEST_F(TreeTest, ListingAndSearchingWalkTheSubtreeInPreOrder)
{
    Tool* a = add(root);
    Tool* b = add(a);
    Tool* c = add(b);
    Tool* d = add(a);
    Tool* e = add(root);
    std::vector<Tool*> list;
    root->toList(list);
    EXPECT_EQ(list, (std::vector<Tool*>{a, b, c, d, e}));
    for (size_t i = 0; i < list.size(); ++i)
        EXPECT_EQ(list[i]->listIndex, int(i));
    std::unordered_map<int, Tool*> map;
    root->toMap(map);
    EXPECT_EQ(map.size(), 5u);
    EXPECT_EQ(map[d->id], d);
    EXPECT_EQ(map.count(root->id), 0u);
    struct Search {
        Tool* in;
        Tool* what;
        bool found;
    } searches[] = {{a, c, true}, {a, e, false}, {root, e, true}, {root, root, false}};
    for (Search const& q : searches) {
        bool found = false;
        q.in->inList(q.what, found);
        EXPECT_EQ(found, q.found);
    }
    EXPECT_EQ(a->Explode(), (std::deque<Tool*>{b, d})) << "a simple group";
    auto shared = makeElement();
    b->setElement(shared);
    d->setElement(shared);
    c->setElement(makeElement());
    std::set<Element*> elements;
    root->toElements(elements);
    EXPECT_EQ(elements.size(), 2u);
    EXPECT_TRUE(b->Explode().empty()) << "a shape is no group";
    Kind array(3);
    array.addChild(new Tool);
    EXPECT_TRUE(array.Explode().empty()) << "a composite is no simple group";
}

// ---- selection and changes over the ring ---------------------------------------------

TEST_F(TreeTest, SelectionReachesTheRingsObjectsAndRespectsTheParent)
{
    Tool* group = add(root);
    Tool* a = addObject(group);
    Tool* sameParent = addObject(group);
    Tool* elsewhere = addObject(root);
    Tool* plain = add(group);
    a->link(sameParent);
    a->link(elsewhere);
    a->link(plain);
    auto selected = [](Tool* t) { return bool(t->flags & Tool::FLAG_SELECTED); };
    a->select(false, false);
    EXPECT_TRUE(selected(a));
    EXPECT_FALSE(selected(sameParent));
    a->select(true, true);
    EXPECT_TRUE(selected(sameParent));
    EXPECT_FALSE(selected(elsewhere));
    a->select(true, false);
    EXPECT_TRUE(selected(elsewhere));
    EXPECT_FALSE(selected(plain));
    Tool::deselect(std::vector<Tool*>{a}, true, false);
    EXPECT_FALSE(selected(a) || selected(sameParent) || selected(elsewhere));
    Tool::highlight(std::vector<Tool*>{a, plain}, false, false);
    EXPECT_EQ(plain->flags & Tool::FLAG_HIGHLIGHTED, Tool::FLAG_HIGHLIGHTED);
    a->unhighlight(false, false);
    EXPECT_EQ(a->flags & Tool::FLAG_HIGHLIGHTED, 0);
    Tool::select(std::vector<Tool*>{plain}, false, false);
    Tool::unhighlight(std::vector<Tool*>{plain}, false, false);
    EXPECT_EQ(plain->flags, Tool::FLAG_VISIBLE | Tool::FLAG_SELECTED);
    std::vector<Tool*> objects;
    a->selectObjects(objects, true, false);
    EXPECT_EQ(objects, (std::vector<Tool*>{a, elsewhere, sameParent})) << "in ring order";
}

TEST_F(TreeTest, ChangesOverTheRingTakeWhatTheMaskSays)
{
    Tool* a = addObject(root);
    Tool* b = addObject(root);
    a->link(b);
    Material red;
    red.pbr.set_color_alpha(Vector4<float>(1, 0, 0, 0.5f), true);
    red.scalar = 4;
    red.flags = 0;
    a->changeMaterial(red, 1 | 0x1000, true, false);
    EXPECT_EQ(b->material.scalar, 4.0f);
    EXPECT_EQ(b->material.flags, Material::DEFAULT_FLAGS) << "no flag bit in the mask";
    Material expected;
    expected.set(red, 1 | 0x1000);
    EXPECT_EQ(b->material, expected);
    a->changeOrientation(3, true, false);
    EXPECT_EQ(b->flags & Tool::FLAG_ORIENTATION, 192);
    EXPECT_EQ(b->orientation(), 3);
    a->changeOrientation(2, false, false);
    EXPECT_EQ(a->flags & Tool::FLAG_ORIENTATION, 128);
    a->changeSpeed(3, true, false);
    a->changeDelay(0.5f, false, false);
    EXPECT_EQ(b->speed, 3.0f);
    EXPECT_EQ(b->delay, 0.0f);
    EXPECT_EQ(a->delay, 0.5f);
}

// ---- kind queries, element queries, time ---------------------------------------------

TEST_F(TreeTest, GroupsSimplexesAndCurvesAreToldByElementAndChildren)
{
    Tool group;
    EXPECT_TRUE(group.isGroup());
    EXPECT_TRUE(group.isSimpleGroup());
    EXPECT_FALSE(group.isSimplex());
    EXPECT_FALSE(group.hasBorders());
    EXPECT_FALSE(group.hasHelpers());
    EXPECT_EQ(group.RenderElement(), nullptr);
    Tool mesh(makeElement(1));
    EXPECT_TRUE(mesh.isSimplex());
    Tool* parent = new Tool(makeElement(1));
    root->addChild(parent);
    add(parent);
    EXPECT_FALSE(parent->isSimplex()) << "a simplex has no children";
    EXPECT_FALSE(mesh.isCurve());
    EXPECT_FALSE(mesh.isSimpleGroup());
    for (int type : {5, 7}) {
        Tool curve(makeElement(type));
        EXPECT_TRUE(curve.isCurve());
        Kind snake(4, makeElement(type));
        EXPECT_TRUE(snake.isCurve());
        Kind array(3, makeElement(type));
        EXPECT_FALSE(array.isCurve());
        EXPECT_TRUE(array.elementIsCurve());
    }
    Tool tube(makeElement(9));
    EXPECT_FALSE(tube.elementIsCurve());
}

TEST_F(TreeTest, TimerTakesTheGlobalTimeDownTheTree)
{
    auto element = makeElement();
    auto* probe = static_cast<TestElement*>(element.get());
    Tool* a = add(root);
    Tool* b = new Tool(element);
    a->addChild(b);
    Tool::GlobalTime = 2.5;
    EXPECT_FALSE(root->timer());
    EXPECT_EQ(b->time, 2.5);
    EXPECT_EQ(a->time, 2.5);
    EXPECT_EQ(probe->lastTime, 2.5);
    probe->changes = true;
    EXPECT_TRUE(root->timer());
    Tool::GlobalTime = 0;
}

} // namespace
} // namespace vel::test
