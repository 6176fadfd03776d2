#include "Scene/ToolList.h"

#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "SceneTestSupport.h"
#include "Support/MathMatchers.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

using M34 = Matrix34<double>;
using V3 = Vector3<double>;

// A composite that draws as two pieces: itself, and its part moved by one along x.
class TwoPieces : public TestElement {
public:
    TestElement* other;
    explicit TwoPieces(TestElement* other)
        : other(other)
    {
    }
    std::deque<SubElement> subelements(bool) override
    {
        return {SubElement{this, M34(), Pbr()}, SubElement{other, moveBy(1, 0, 0), Pbr()}};
    }
};

class ToolListTest : public SceneTest {
protected:
    Shader meshShader{"mesh"};
    Shader curveShader{"curve"};
    ToolList list;

    Shared<Element> element(int kind = 1)
    {
        auto* e = new TestElement(kind);
        e->shader = kind == 5 ? &curveShader : &meshShader;
        return Shared<Element>(e);
    }
    // The tools of a draw list, by entry.
    static std::vector<int> entries(ToolList::DrawList const& draws)
    {
        std::vector<int> out;
        for (auto const& [shader, sub] : draws)
            out.push_back(sub.index);
        std::sort(out.begin(), out.end());
        return out;
    }
};

TEST_F(ToolListTest, AppendListsTheTreeInPreOrderWithWorldMatricesAndTheChaseToObjects)
{
    // a (object) > b > c ; a > d (object) > e ; f
    Tool* a = add(root, element(), true, moveBy(1, 0, 0));
    Tool* b = add(a, element(), false, moveBy(0, 1, 0));
    Tool* c = add(b, element(), false, moveBy(0, 0, 1));
    Tool* d = add(a, element(), true, moveBy(0, 2, 0));
    Tool* e = add(d, element());
    Tool* f = add(root, Shared<Element>(), false, moveBy(5, 0, 0));
    list.append(root, false);

    ASSERT_EQ(list.count(), 6);
    std::vector<Tool*> order;
    for (RenderItem const& item : list.items)
        order.push_back(item.tool);
    EXPECT_EQ(order, (std::vector<Tool*>{a, b, c, d, e, f}));
    EXPECT_EQ(list.items[2].element, c->element.get());
    EXPECT_EQ(list.items[5].element, nullptr);
    for (int i = 0; i < list.count(); ++i) {
        M34 world;
        list.items[size_t(i)].tool->worldTransform(world, true);
        EXPECT_TRUE(Near(list.matrices[size_t(i)], world)) << "entry " << i;
    }
    EXPECT_EQ(list.parent(2), 0); // c belongs to a through b
    EXPECT_EQ(list.parent(4), 3); // e to the object d
    EXPECT_EQ(list.parent(3), 3);
    EXPECT_EQ(list.parent(5), 5); // the top of the list answers for itself
    EXPECT_EQ(list.FirstParent(2), b);
    EXPECT_EQ(list.FirstParent(0), nullptr);
    EXPECT_EQ(list.FirstParent(6), nullptr);
    EXPECT_TRUE(Near(list.pivot(2), list.matrices[1]));
    EXPECT_TRUE(Near(list.pivot(0), list.matrices[0]));

    // A subtree listed alone stands where it is in the world.
    ToolList alone;
    alone.append(d, false);
    ASSERT_EQ(alone.count(), 2);
    EXPECT_TRUE(Near(alone.matrices[1], list.matrices[4]));
}

TEST_F(ToolListTest, SkippingTheSelectionLeavesOutSelectedSubtrees)
{
    Tool* a = add(root, element(), true);
    Tool* b = add(a, element());
    add(b, element());
    Tool* d = add(root, element(), true);
    b->select(false, false);
    list.append(root, true);
    ASSERT_EQ(list.count(), 2);
    EXPECT_EQ(list.items[0].tool, a);
    EXPECT_EQ(list.items[1].tool, d);
}

TEST_F(ToolListTest, ANestedInstanceIsListedPerMatrixUnderItsOwnerAndPointsBackToIt)
{
    Tool* owner = add(root, element(), true, moveBy(10, 0, 0));
    list.append(root, false);
    // An item with one child, not in the tree, shown twice by the owner.
    Tool* item = new Tool(element(), moveBy(0, 1, 0));
    Tool* part = add(item, element(), false, moveBy(0, 0, 1));
    std::vector<M34> instances{moveBy(1, 0, 0), moveBy(2, 0, 0)};
    list.append(item, M34::Scale(2), instances, list, owner, 0, false);

    ASSERT_EQ(list.count(), 5);
    for (int copy = 0; copy < 2; ++copy) {
        int i = 1 + 2 * copy;
        EXPECT_EQ(list.items[size_t(i)].tool, item);
        EXPECT_EQ(list.items[size_t(i + 1)].tool, part);
        M34 expected = item->transform() * M34::Scale(2) * instances[size_t(copy)] * owner->transform();
        EXPECT_TRUE(Near(list.matrices[size_t(i)], expected));
        EXPECT_TRUE(Near(list.matrices[size_t(i + 1)], part->transform() * expected));
        EXPECT_EQ(list.indices[size_t(i)], 0);
        EXPECT_EQ(list.indices[size_t(i + 1)], 0);
        EXPECT_EQ(list.parent(i + 1), i);
    }
    EXPECT_DEATH(list.append(item, M34(), instances, list, part, 0, false), "the entry given is the owner's");
    delete item;
}

TEST_F(ToolListTest, MaterialStylesSortTransparentEntriesApartAtTheAlphaThreshold)
{
    Tool* opaque = add(root, element(), true);
    Tool* edge = add(root, element(), true);
    edge->material.pbr.setColor(3, 8160); // exactly the threshold: opaque
    Tool* faint = add(root, element(), true);
    faint->material.pbr.setColor(3, 8159);
    Tool* flagged = add(root, element(), true);
    flagged->flags |= Tool::FLAG_TRANSPARENT;
    Shared<Element> glass = element();
    glass->transparent = true;
    add(root, glass, true);
    list.append(root, false);
    EXPECT_FALSE(list.isTransparent(0));

    Rendering::instance().style = Rendering::STYLE_COLOR;
    list.sort(true, true, true);
    EXPECT_EQ(entries(list.sorted[ToolList::DRAW_OPAQUE]), (std::vector<int>{0, 1}));
    EXPECT_EQ(entries(list.sorted[ToolList::DRAW_TRANSPARENT]), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(list.sorted[ToolList::DRAW_OPAQUE].count(&meshShader), 2u);

    list.sort(true, false, true); // transparent ones not at all
    EXPECT_EQ(entries(list.sorted[ToolList::DRAW_OPAQUE]), (std::vector<int>{0, 1}));
    EXPECT_TRUE(list.sorted[ToolList::DRAW_TRANSPARENT].empty());

    Rendering::instance().style = 4; // no transparent pass: everything in the first list
    list.sort(true, true, true);
    EXPECT_EQ(entries(list.sorted[ToolList::DRAW_OPAQUE]), (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_TRUE(list.sorted[ToolList::DRAW_TRANSPARENT].empty());
    (void)opaque;
}

// Outside the material styles the pieces are keyed by the shader of a depth draw in the
// depth style, and of a plain draw in any other.
TEST_F(ToolListTest, TheDepthStyleKeysPiecesByTheDepthShader)
{
    struct ByKind : TestElement {
        Shader* depth;
        explicit ByKind(Shader* depth)
            : depth(depth)
        {
        }
        Shader* renderShader(TRenderState const& state) const override
        {
            return state.kind == rtDEPTH ? depth : shader;
        }
    };
    auto* e = new ByKind(&curveShader);
    e->shader = &meshShader;
    add(root, Shared<Element>(e), true);
    list.append(root, false);
    for (int style : {rtDEPTH, 4}) {
        Rendering::instance().style = style;
        list.sort(true, true, true);
        Shader* expected = style == rtDEPTH ? &curveShader : &meshShader;
        EXPECT_EQ(list.sorted[ToolList::DRAW_OPAQUE].count(expected), 1u) << "style " << style;
    }
}

TEST_F(ToolListTest, SortLeavesOutWhatIsNotDrawnAndKeysPiecesByShader)
{
    add(root, element(), true);                         // 0 drawn
    Tool* hidden = add(root, element(), true);          // 1 not visible
    hidden->flags &= ~Tool::FLAG_VISIBLE;
    add(root, Shared<Element>(), true);                 // 2 group
    add(root, element(5), true);                        // 3 curve
    auto* body = new KindTool(9, element());            // 4 rigid body
    root->addChild(body);
    auto* part = new TestElement;
    part->shader = &curveShader;
    Shared<Element> partOwner(part);
    auto* pair = new TwoPieces(part);
    pair->shader = &meshShader;
    Shared<Element> composite(pair);
    auto* bone = new KindTool(8, composite);            // 5 bone: one piece, whatever its element says
    root->addChild(bone);
    add(root, composite, true);                          // 6 two pieces
    Tool* twin = add(root, composite, true);            // 7 the same element again
    list.append(root, false);

    list.sort(true, true, true);
    auto const& draws = list.sorted[ToolList::DRAW_OPAQUE];
    EXPECT_EQ(entries(draws), (std::vector<int>{0, 3, 4, 5, 6, 6, 7, 7}));
    EXPECT_EQ(draws.count(&curveShader), 3u); // the curve and each second piece
    for (auto const& [shader, sub] : draws) {
        if (sub.index == 7 && sub.sub.element == part) {
            EXPECT_TRUE(Near(sub.sub.transform, moveBy(1, 0, 0)));
        }
        if (sub.index == 5) {
            EXPECT_EQ(sub.sub.transform, M34());
        }
    }

    list.sort(false, true, false);
    EXPECT_EQ(entries(list.sorted[ToolList::DRAW_OPAQUE]), (std::vector<int>{0, 5, 6, 6, 7, 7}));
    (void)twin;
}

} // namespace
} // namespace vel::test
