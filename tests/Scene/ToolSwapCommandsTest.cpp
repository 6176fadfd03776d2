#include "Scene/Commands/ToolSwapCommands.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <functional>

namespace vel::test {
namespace {

class SwapCommandTest : public TreeTest {
protected:
    Tool* a = nullptr;
    Tool* b = nullptr;

    void SetUp() override
    {
        TreeTest::SetUp();
        a = addObject(root);
        b = addObject(root);
    }
};

// Each command swaps its field on every target, whatever the target list repeats: two
// selected linked twins expanded through the ring name each twin twice.
TEST_F(SwapCommandTest, UndoAndRedoRestoreTheFieldOfEveryTargetOnce)
{
    struct Case {
        const char* what;
        std::function<Command*(std::vector<Tool*> const&)> make;
        std::function<void()> change; // empty: the command applies itself by one redo
    };
    Material m;
    m.scalar = 9;
    m.flags = 0;
    Case cases[] = {
        {"rotation axes", [](auto const& t) { return new CommandConstrainRotationObjects(t); },
         [&] { a->rotationAxis = Vector3<float>(0, 0, 1), b->rotationAxis = Vector3<float>(1, 0, 0); }},
        {"translation axes", [](auto const& t) { return new CommandConstrainTranslationObjects(t); },
         [&] { b->translationAxis = Vector3<float>(0, 2, 0); }},
        {"multipliers", [](auto const& t) { return new CommandRotationMultiplierObjects(t); },
         [&] { a->rotationMultiplier = -0.25f; }},
        {"speeds", [](auto const& t) { return new CommandSpeedObjects(t); }, [&] { a->changeSpeed(4, true, false); }},
        {"delays", [](auto const& t) { return new CommandDelayObjects(t); }, [&] { b->changeDelay(1.5f, false, false); }},
        {"materials", [](auto const& t) { return new CommandMaterialObjects(t); },
         [&] { a->changeMaterial(m, 0x1000 | Material::MASK_FLAG_BITS, true, false); }},
        {"flipped normals", [](auto const& t) { return new CommandFlipNormalsObjects(t); }, nullptr},
    };
    b->material.flags |= Material::FLAG_FLIPPED_NORMALS;
    a->link(b);
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<Tool*> targets;
        a->selectObjects(targets, true, false);
        b->selectObjects(targets, true, false);
        ASSERT_EQ(targets.size(), 4u);
        if ((&c - cases) % 2) { // long lists take another way to their tools
            std::vector<Tool*> once = targets;
            for (int k = 0; k < 4; ++k)
                targets.insert(targets.end(), once.begin(), once.end());
        }
        auto before = snapshot(root);
        Command* command = c.make(targets);
        if (c.change)
            c.change();
        else
            command->redo();
        history().push(command);
        auto after = snapshot(root);
        ASSERT_NE(difference(after, before), "");
        history().undo();
        EXPECT_EQ(difference(snapshot(root), before), "");
        history().redo();
        EXPECT_EQ(difference(snapshot(root), after), "");
    }
}

// The steps of one drag fold into the first; undo gives back the value before the drag.
TEST_F(SwapCommandTest, ADragOfOneAxisIsOneStep)
{
    auto before = snapshot(root);
    size_t steps = history().commands.size();
    for (int i = 1; i <= 3; ++i) {
        auto* command = new CommandConstrainRotationObject(a);
        command->mergeable = true;
        a->rotationAxis = Vector3<float>(float(i), 0, 0);
        history().push(command);
    }
    EXPECT_EQ(history().commands.size(), steps + 1);
    history().undo();
    EXPECT_EQ(snapshot(root), before);
    history().redo();
    EXPECT_EQ(a->rotationAxis, Vector3<float>(3, 0, 0));
    auto* other = new CommandConstrainRotationObject(b);
    other->mergeable = true;
    history().push(other);
    EXPECT_EQ(history().commands.size(), steps + 2) << "another tool is another step";
}

} // namespace
} // namespace vel::test
