#include "Scene/Commands/CommandObjectSubChild.h"

#include "Core/Assert.h"
#include "Scene/Tool.h"

namespace vel {

CommandObjectSubChild::CommandObjectSubChild(Tool* parent, Tool* child, int position)
    : Command(TYPE)
    , parent(parent)
    , child(child)
    , position(position)
    , wasObject(child->isObject())
{
}

void CommandObjectSubChild::undo()
{
    VEL_ASSERT(position >= 0 && position <= int(parent->children.size()));
    child->Parent = parent;
    child->setObject(wasObject);
    parent->children.insert(parent->children.begin() + position, child);
    Command::undo();
}

void CommandObjectSubChild::redo()
{
    position = parent->childPosition(child);
    VEL_ASSERT_MSG(position >= 0, "the child to take out is not in its parent");
    wasObject = child->isObject();
    parent->children.erase(parent->children.begin() + position);
    child->Parent = nullptr;
    Command::redo();
}

std::string CommandObjectSubChild::name()
{
    return "Sub Child";
}

} // namespace vel
