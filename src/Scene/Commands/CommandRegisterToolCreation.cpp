#include "Scene/Commands/CommandRegisterToolCreation.h"

#include "Scene/Tool.h"

namespace vel {

CommandRegisterToolCreation::CommandRegisterToolCreation(Tool* tool)
    : Command(TYPE)
    , tool(tool)
    , toolId(tool->id)
{
}

// Every command that refers to the tool is newer than this one and is gone by now, unless
// the whole history is being cleared; so an abandoned tool has no other way back. A removed
// tool's CommandObjectDelete, newer, has destroyed it already.
CommandRegisterToolCreation::~CommandRegisterToolCreation()
{
    if (!Tool::Alive(toolId))
        return;
    if (!done || (Tool::Abandoned(toolId) && !tool->Parent))
        delete tool;
}

std::string CommandRegisterToolCreation::name()
{
    return "Register Tool Creation";
}

} // namespace vel
