#include "Scene/Commands/CommandRegisterToolCreation.h"

#include "Scene/Tool.h"

namespace vel {

CommandRegisterToolCreation::CommandRegisterToolCreation(Tool* tool)
    : Command(TYPE)
    , tool(tool)
{
}

CommandRegisterToolCreation::~CommandRegisterToolCreation()
{
    if (!done)
        delete tool;
}

std::string CommandRegisterToolCreation::name()
{
    return "Register Tool Creation";
}

} // namespace vel
