#include "Scene/Commands/ToolSwapCommands.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

namespace vel::test {
namespace {

class SwapCommandTest : public TreeTest {
protected:
    Tool* a = nullptr;
    Tool* b = nullptr;
    std::vector<Tool*> both;

    void SetUp() override
    {
        TreeTest::SetUp();
        a = add(root);
        b = add(root);
        both = {a, b};
    }

    // The caller's side of a swap command: take the values, change the tools, push.
    template <class C, class Change>
    void record(Change const& change)
    {
        auto* command = new C(both);
        change();
        history().push(command);
    }

    // Undo gives `before` back, redo gives `after` back.
    void expectUndoRedo(std::vector<ToolState> const& before, std::vector<ToolState> const& after)
    {
        history().undo();
        EXPECT_EQ(snapshot(root), before);
        history().redo();
        EXPECT_EQ(snapshot(root), after);
    }
};

TEST_F(SwapCommandTest, ConstraintAxesSwap)
{
    auto before = snapshot(root);
    record<CommandConstrainRotationObjects>([&] {
        a->rotationAxis = Vector3<float>(0, 0, 1);
        b->rotationAxis = Vector3<float>(1, 0, 0);
    });
    record<CommandConstrainTranslationObjects>([&] { b->translationAxis = Vector3<float>(0, 2, 0); });
    auto after = snapshot(root);
    history().undo();
    EXPECT_EQ(b->translationAxis, Vector3<float>());
    EXPECT_EQ(b->rotationAxis, Vector3<float>(1, 0, 0));
    history().undo();
    EXPECT_EQ(snapshot(root), before);
    history().redo();
    history().redo();
    EXPECT_EQ(snapshot(root), after);
}

TEST_F(SwapCommandTest, MultipliersSpeedsAndDelaysSwap)
{
    auto before = snapshot(root);
    history().superBegin("Animation", false);
    record<CommandRotationMultiplierObjects>([&] { a->rotationMultiplier = -0.25f; });
    record<CommandSpeedObjects>([&] { a->changeSpeed(4, false, false); });
    record<CommandDelayObjects>([&] { b->changeDelay(1.5f, false, false); });
    history().superEnd();
    auto after = snapshot(root);
    EXPECT_EQ(a->speed, 4.0f);
    expectUndoRedo(before, after);
}

TEST_F(SwapCommandTest, MaterialsSwap)
{
    auto before = snapshot(root);
    Material m;
    m.scalar = 9;
    m.flags = 0;
    record<CommandMaterialObjects>([&] {
        a->changeMaterial(m, 0x1000, false, false);
        b->changeMaterial(m, Material::MASK_FLAG_BITS, false, false);
    });
    EXPECT_EQ(a->material.scalar, 9.0f);
    EXPECT_EQ(b->material.flags, 0);
    expectUndoRedo(before, snapshot(root));
}

// Flipping holds no values: both directions toggle the bit.
TEST_F(SwapCommandTest, FlipNormalsTogglesTheBitBothWays)
{
    b->material.flags |= Material::FLAG_FLIPPED_NORMALS;
    auto before = snapshot(root);
    auto* command = new CommandFlipNormalsObjects(both);
    command->redo();
    history().push(command);
    EXPECT_TRUE(a->material.flags & Material::FLAG_FLIPPED_NORMALS);
    EXPECT_FALSE(b->material.flags & Material::FLAG_FLIPPED_NORMALS);
    expectUndoRedo(before, snapshot(root));
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
    auto after = snapshot(root);
    expectUndoRedo(before, after);
    EXPECT_EQ(a->rotationAxis, Vector3<float>(3, 0, 0));
    auto* other = new CommandConstrainRotationObject(b);
    other->mergeable = true;
    history().push(other);
    EXPECT_EQ(history().commands.size(), steps + 2) << "another tool is another step";
}

TEST_F(SwapCommandTest, NamesAreTheHistoryListsTexts)
{
    std::vector<std::unique_ptr<Command>> commands;
    commands.emplace_back(new CommandConstrainRotationObject(a));
    commands.emplace_back(new CommandConstrainRotationObjects(both));
    commands.emplace_back(new CommandConstrainTranslationObjects(both));
    commands.emplace_back(new CommandRotationMultiplierObjects(both));
    commands.emplace_back(new CommandSpeedObjects(both));
    commands.emplace_back(new CommandDelayObjects(both));
    commands.emplace_back(new CommandMaterialObjects(both));
    commands.emplace_back(new CommandFlipNormalsObjects(both));
    std::vector<std::string> names;
    for (auto& c : commands)
        names.push_back(c->name());
    EXPECT_EQ(names, (std::vector<std::string>{"Swap Rotation Axis", "Constrain Rotation", "Constrain Translation",
                                               "Rotation Multiplier", "Objects Speed", "Objects Delay",
                                               "Objects Material", "Flip Normals Objects"}));
}

} // namespace
} // namespace vel::test
