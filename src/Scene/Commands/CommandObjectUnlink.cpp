#include "Scene/Commands/CommandObjectUnlink.h"

#include "Scene/Tool.h"

namespace vel {

CommandObjectUnlink::CommandObjectUnlink(Tool* tool, Tool* previous)
    : Command(TYPE)
    , tool(tool)
    , previous(previous)
{
}

void CommandObjectUnlink::undo()
{
    tool->linkNext = previous->linkNext;
    previous->linkNext = tool;
    Command::undo();
}

void CommandObjectUnlink::redo()
{
    previous->linkNext = tool->linkNext;
    tool->linkNext = tool;
    Command::redo();
}

std::string CommandObjectUnlink::name()
{
    return "Unlink Object";
}

} // namespace vel
