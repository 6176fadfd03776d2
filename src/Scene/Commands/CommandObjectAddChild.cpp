#include "Scene/Commands/CommandObjectAddChild.h"

#include "Core/Assert.h"
#include "Scene/Tool.h"

namespace vel {

CommandObjectAddChild::CommandObjectAddChild(Tool* parent, Tool* child, int position)
    : Command(TYPE)
    , parent(parent)
    , child(child)
    , position(position)
    , wasObject(child->isObject())
    , childId(child->id)
{
}

CommandObjectAddChild::~CommandObjectAddChild()
{
    if (!done && Tool::Alive(childId) && !child->Parent)
        Tool::Abandon(childId);
}

void CommandObjectAddChild::undo()
{
    int at = parent->childPosition(child);
    VEL_ASSERT_MSG(at >= 0, "the child to take back is not in its parent");
    parent->children.erase(parent->children.begin() + at);
    child->Parent = nullptr;
    child->setObject(wasObject);
    Command::undo();
}

void CommandObjectAddChild::redo()
{
    child->Parent = parent;
    child->setObject(parent->isObject());
    parent->children.push_back(child);
    Command::redo();
}

std::string CommandObjectAddChild::name()
{
    return "Add Child";
}

} // namespace vel
