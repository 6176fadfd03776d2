#include "Scene/Commands/CommandChangeObject.h"

namespace vel {

CommandChangeObject::CommandChangeObject(int type, Tool* tool)
    : Command(type)
    , tool(tool)
{
}

void CommandChangeObject::undo()
{
    swap();
    Command::undo();
}

void CommandChangeObject::redo()
{
    swap();
    Command::redo();
}

} // namespace vel
