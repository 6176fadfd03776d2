#include "Scene/Commands/CommandChangeObjects.h"

#include <unordered_set>

namespace vel {

// Each tool once, in the order first given: a selection expanded through the rings of links
// names a twin once per selected member, and a second swap would undo the first.
CommandChangeObjects::CommandChangeObjects(int type, std::vector<Tool*> const& given)
    : Command(type)
{
    std::unordered_set<Tool*> seen;
    targets.reserve(given.size());
    for (Tool* t : given)
        if (seen.insert(t).second)
            targets.push_back(t);
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
