#include "Scene/Commands/CommandObjectLink.h"

#include "Scene/Tool.h"

#include <utility>

namespace vel {

CommandObjectLink::CommandObjectLink(Tool* first, Tool* second)
    : Command(TYPE)
    , first(first)
    , second(second)
{
}

void CommandObjectLink::undo()
{
    std::swap(first->linkNext, second->linkNext);
    Command::undo();
}

void CommandObjectLink::redo()
{
    std::swap(first->linkNext, second->linkNext);
    Command::redo();
}

std::string CommandObjectLink::name()
{
    return "Link Objects";
}

} // namespace vel
