#include "Scene/Root.h"

#include "SceneTestSupport.h"

#include <gtest/gtest.h>

namespace vel::test {
namespace {

TEST_F(TreeTest, TheRootIsNoObjectHasNoPlacementAndIsNoStep)
{
    EXPECT_TRUE(history().commands.empty()) << "making the root records nothing";
    EXPECT_TRUE(root->isRoot());
    root->setObject(true);
    EXPECT_FALSE(root->isObject());
    root->objectMatrix = Matrix34<double>::Scale(2);
    Tool* a = add(root, Matrix34<double>::Translation(Vector3<double>(1, 0, 0)));
    EXPECT_TRUE(near(worldPoint(a, Vector3<double>()), Vector3<double>(1, 0, 0)));
}

TEST_F(TreeTest, DeletingTheRootDestroysTheWholeTree)
{
    Tool* a = add(root);
    add(a);
    add(root)->link(a);
    delete root;
    root = new Root;
    EXPECT_EQ(Tool::COUNT, 1);
    history().clear();
}

} // namespace
} // namespace vel::test
