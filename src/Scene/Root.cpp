#include "Scene/Root.h"

#include "Core/Assert.h"

namespace vel {

Root::Root()
    : Tool(Unrecorded{})
{
}

int Root::ToolType() const
{
    return TYPE;
}

void Root::remove()
{
    VEL_ASSERT_MSG(false, "the scene owns the root: remove its children instead");
}

void Root::addToParent(Tool*)
{
    VEL_ASSERT_MSG(false, "the root has no parent");
}

void Root::toMap(std::unordered_map<int, Tool*>& map)
{
    for (Tool* child : children)
        child->toMap(map);
}

void Root::toList(std::vector<Tool*>& list)
{
    for (Tool* child : children)
        child->toList(list);
}

void Root::inList(Tool* T, bool& found)
{
    for (Tool* child : children) {
        child->inList(T, found);
        if (found)
            return;
    }
}

Matrix34<double> Root::transform() const
{
    return Matrix34<double>();
}

void Root::setObject(bool)
{
}

bool Root::isObject() const
{
    return false;
}

} // namespace vel
