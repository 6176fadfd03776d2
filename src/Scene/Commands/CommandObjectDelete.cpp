#include "Scene/Commands/CommandObjectDelete.h"

#include "Scene/Tool.h"

namespace vel {

CommandObjectDelete::CommandObjectDelete(Tool* tool)
    : Command(TYPE)
    , tool(tool)
    , toolId(tool->id)
{
}

CommandObjectDelete::~CommandObjectDelete()
{
    if (done && Tool::Alive(toolId))
        delete tool;
}

std::string CommandObjectDelete::name()
{
    return "Object Delete";
}

} // namespace vel
