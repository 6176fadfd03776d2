#include "Scene/Commands/CommandReplaceElement.h"
#include "Scene/Commands/CommandUniqueElement.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

class ElementCommandsTest : public SceneTest {
protected:
    Shared<Element> shape;
    Tool* a = nullptr;
    Tool* b = nullptr;
    Tool* other = nullptr;

    void SetUp() override
    {
        SceneTest::SetUp();
        shape = Shared<Element>(new TestElement);
        a = add(root, shape, true);
        b = add(root, shape, true);
        other = add(root, Shared<Element>(new TestElement), true);
        a->link(b);
    }
    void TearDown() override
    {
        shape.release();
        SceneTest::TearDown();
    }
};

TEST_F(ElementCommandsTest, ReplacingSwapsTheSharedElementOfEveryTargetBothWays)
{
    Shared<Element> converted(new TestElement(3));
    auto* command = new CommandReplaceElement({a, b}, converted);
    command->swap();
    history().push(command);
    converted.release();
    EXPECT_EQ(a->element->Type(), 3);
    EXPECT_EQ(a->element, b->element);
    EXPECT_EQ(shape.useCount(), 2); // the test and the command

    history().undo();
    EXPECT_EQ(a->element, shape);
    EXPECT_EQ(b->element, shape);
    EXPECT_EQ(command->element->Type(), 3);
    history().redo();
    EXPECT_EQ(b->element->Type(), 3);

    EXPECT_DEATH(CommandReplaceElement({a, other}, shape).swap(), "share one element");
}

TEST_F(ElementCommandsTest, AUniqueElementMakesASharedShapePrivateToOneTool)
{
    auto* command = new CommandUniqueElement(b, Shared<Element>(new TestElement));
    command->swap();
    history().push(command);
    EXPECT_NE(b->element, shape);
    EXPECT_EQ(a->element, shape);
    Element* own = b->element.get();

    history().undo();
    EXPECT_EQ(b->element, shape);
    history().redo();
    EXPECT_EQ(b->element.get(), own);
}

} // namespace
} // namespace vel::test
