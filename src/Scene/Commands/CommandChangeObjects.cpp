#include "Scene/Commands/CommandChangeObjects.h"

namespace vel {

CommandChangeObjects::CommandChangeObjects(int type, std::vector<Tool*> const& targets)
    : Command(type)
    , targets(targets)
{
}

void CommandChangeObjects::undo()
{
    swap();
    Command::undo();
}

void CommandChangeObjects::redo()
{
    swap();
    Command::redo();
}

} // namespace vel
