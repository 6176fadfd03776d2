#include "Scene/Element.h"

#include "OpenGL/GLAtom.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "SceneTestSupport.h"
#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vel::test {
namespace {

using V3 = Vector3<double>;
using F3 = Vector3<float>;

// A copyable element, for the identity rules of copies.
class CopyElement : public TestElement {
public:
    using TestElement::TestElement;
    CopyElement(CopyElement const&) = default;
    Element* clone() override { return new CopyElement(*this); }
};

// An atom that writes its calls into a journal and fails where told.
class Atom : public GLAtom {
public:
    std::string* journal;
    char tag;
    bool compiles = true;
    bool enables = true;

    Atom(std::string* journal, char tag)
        : journal(journal)
        , tag(tag)
    {
    }
    bool compile() override
    {
        *journal += std::string("c") + tag;
        return compiles;
    }
    bool enable() override
    {
        *journal += std::string("e") + tag;
        return enables;
    }
    void disable() override { *journal += std::string("d") + tag; }
};

// An element whose buffers bring two atoms, and whose GPU data may refuse.
class DrawElement : public TestElement {
public:
    Atom* a;
    Atom* b;
    bool gpu = true;
    int gpuDisables = 0;

    DrawElement(Atom* a, Atom* b)
        : a(a)
        , b(b)
    {
    }
    bool enableGPUData(TRenderState const&, bool) override { return gpu; }
    void disableGPUData() override { ++gpuDisables; }
    void renderBuffers(TRenderState const&) override
    {
        machine.add(a);
        machine.add(b);
    }
};

class ElementTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(Element::COUNT, 0); }
};

TEST_F(ElementTest, CopiesAreNewElementsAndTheBaseCloneIsTheElementItself)
{
    TestElement plain;
    EXPECT_EQ(plain.clone(), &plain);

    CopyElement original;
    original.center = F3(1, 2, 3);
    original.scale = 4;
    original.transparent = true;
    std::unique_ptr<Element> copy(original.clone());
    EXPECT_EQ(Element::COUNT, 3);
    EXPECT_GT(copy->id, original.id);
    EXPECT_EQ(copy->center, original.center);
    EXPECT_EQ(copy->scale, 4.0f);
    EXPECT_TRUE(copy->transparent);

    TestElement other;
    other.reset_clone(&original);
    EXPECT_EQ(other.center, original.center);
    EXPECT_EQ(other.scale, original.scale);
}

TEST_F(ElementTest, TheTransformFamilyMapsOwnCoordinatesToTheUnitShapeAndBack)
{
    TestElement e;
    e.center = F3(1, -2, 0.5f);
    e.scale = 4;
    F3 p(3, 2, -1);
    EXPECT_TRUE(Near(V3(e.ScaleCenter(e.InvScaleCenter(p))), V3(p), 1e-6));
    EXPECT_FLOAT_EQ(e.InvScale(e.Scale(0.3f)), 0.3f);
    // Own centre to the origin, one scale to size f.
    EXPECT_TRUE(Near(V3(e.center) * e.Transform(2), V3(), 1e-12));
    EXPECT_TRUE(Near((V3(e.center) + V3(e.scale, 0, 0)) * e.Transform(2), V3(2, 0, 0), 1e-12));
    EXPECT_TRUE(Near(V3(p) * e.Transform(1) * e.InvTransform(), V3(p), 1e-12));
    F3 q = p;
    EXPECT_TRUE(Near(V3(1, 0, 0) * e.TransformSculpt(q, 0, 0), V3(0.25, 0, 0), 1e-12));
    e.calculateAABB(Matrix34<double>::Scale(10)); // the base ignores the matrix
    EXPECT_EQ(e.aabb.min, V3(-0.5, -0.5, -0.5));
    EXPECT_EQ(e.aabb.max, V3(0.5, 0.5, 0.5));
}

// An edit ends with the element's update(), which moves the global stamp on: a composite
// rebuilds once after an edit of any of its parts, and not again until the next one.
TEST_F(ElementTest, ReadyRebuildsACompositeOnceAfterAnEditOfAnyPart)
{
    TestElement first, second, composite;
    composite.parts = {&first, &second};
    composite.ready(); // fresh parts and composite are built once
    int built = composite.updates;
    EXPECT_EQ(first.updates, 1);
    for (TestElement* edited : {&first, &second}) {
        edited->update();
        composite.ready();
        EXPECT_EQ(composite.updates, ++built);
        composite.ready();
        first.ready();
        EXPECT_EQ(composite.updates, built);
    }
    // A stale element whose parts are older than itself is not rebuilt.
    TestElement leaf;
    leaf.updateStamp = 5;
    EXPECT_EQ(leaf.ready(), 5);
    EXPECT_EQ(leaf.updates, 0);
}

TEST_F(ElementTest, TimerAdvancesThePartsAfterTheFirstAndOrsTheirAnswers)
{
    TestElement a, b;
    CopyElement composite; // the base timer, not TestElement's
    composite.parts = {&a, &b};
    b.changes = true;
    EXPECT_TRUE(composite.Element::timer(2.5));
    EXPECT_EQ(a.lastTime, 2.5);
    EXPECT_EQ(b.lastTime, 2.5);
    b.changes = false;
    EXPECT_FALSE(composite.Element::timer(3));
}

TEST_F(ElementTest, RenderBeginCompilesAllAtomsBeforeEnablingAndRenderEndForgetsThem)
{
    std::string journal;
    Atom a(&journal, 'a'), b(&journal, 'b');
    DrawElement e(&a, &b);
    TRenderState state;

    EXPECT_TRUE(e.renderBegin(state, false));
    EXPECT_EQ(journal, "cacbeaeb");
    EXPECT_TRUE(e.machine.enabled);
    e.renderEnd();
    EXPECT_EQ(journal, "cacbeaebdbda");
    EXPECT_FALSE(e.machine.enabled);
    EXPECT_TRUE(e.machine.atoms.empty());
    EXPECT_EQ(e.gpuDisables, 1);

    journal.clear();
    b.compiles = false; // nothing is bound when one atom cannot compile
    EXPECT_FALSE(e.renderBegin(state, false));
    EXPECT_EQ(journal, "cacb");
    e.renderEnd();
    b.compiles = true;

    journal.clear();
    b.enables = false; // what was enabled is disabled again
    EXPECT_FALSE(e.renderBegin(state, false));
    EXPECT_EQ(journal, "cacbeaebda");
    e.renderEnd();

    journal.clear();
    e.gpu = false; // no GPU data: the draw is skipped before any atom
    EXPECT_FALSE(e.renderBegin(state, false));
    EXPECT_EQ(journal, "");
}

TEST_F(ElementTest, AMeshIsItsOwnMeshAndANewMeshIsAValidCopyWhileOtherKindsConvertToNothing)
{
    TestElement plain;
    EXPECT_EQ(Element::CreateMesh(&plain), nullptr);
    EXPECT_EQ(Element::CreateNewMesh(&plain), nullptr);
    EXPECT_DEATH(Element::CreateMesh(nullptr), "Assertion failed: e\n");
    EXPECT_DEATH(Element::CreateNewMesh(nullptr), "Assertion failed: e\n");

    std::unique_ptr<Mesh> box = Mesh::Box();
    Element* e = box.get();
    EXPECT_EQ(e->Type(), 1);
    EXPECT_EQ(e->BlockId(), 0xe0000001u);
    EXPECT_EQ(Element::CreateMesh(e), box.get());
    std::unique_ptr<Mesh> copy(Element::CreateNewMesh(e));
    ASSERT_TRUE(copy);
    EXPECT_NE(copy.get(), box.get());
    EXPECT_NE(copy->id, box->id);
    EXPECT_EQ(copy->faces.size(), box->faces.size());
    EXPECT_TRUE(copy->validate().empty());
    EXPECT_EQ(Element::COUNT, 3);

    // Clay takes a copy of the mesh's records; what does not convert gives none.
    EXPECT_EQ(Element::CreateClay(&plain), nullptr);
    std::unique_ptr<Clay> clay(Element::CreateClay(e));
    ASSERT_TRUE(clay);
    EXPECT_EQ(clay->Type(), 3);
    EXPECT_EQ(clay->BlockId(), 0xe000000au);
    EXPECT_EQ(clay->verts.size(), box->verts.size());
    EXPECT_TRUE(clay->validate().empty());
    EXPECT_EQ(Element::COUNT, 4);
}

} // namespace
} // namespace vel::test
