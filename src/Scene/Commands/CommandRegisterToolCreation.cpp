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
// the whole history is being cleared; so a tool out of the tree has no other way back.
// A removed tool's CommandObjectDelete, newer, has destroyed it already.
CommandRegisterToolCreation::~CommandRegisterToolCreation()
{
    if (!Tool::Alive(toolId))
        return;
    if (!done || (!tool->Parent && !tool->isRoot()))
        delete tool;
}

std::string CommandRegisterToolCreation::name()
{
    return "Register Tool Creation";
}

} // namespace vel
