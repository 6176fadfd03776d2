#include "Scene/Commands/CommandObjectDelete.h"

#include "Scene/Tool.h"

namespace vel {

CommandObjectDelete::CommandObjectDelete(Tool* tool)
    : Command(TYPE)
    , tool(tool)
{
}

CommandObjectDelete::~CommandObjectDelete()
{
    if (done)
        delete tool;
}

std::string CommandObjectDelete::name()
{
    return "Object Delete";
}

} // namespace vel
