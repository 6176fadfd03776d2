#include "Scene/Commands/CommandChangeObjects.h"

#include <algorithm>
#include <unordered_set>

namespace vel {

// Each tool once, in the order first given: a selection expanded through the rings of links
// names a twin once per selected member, and a second swap would undo the first.
CommandChangeObjects::CommandChangeObjects(int type, std::vector<Tool*> const& given)
    : Command(type)
{
    targets.reserve(given.size());
    // A drag pushes one command per frame, mostly for a few tools: a search of what is kept
    // costs less than a set then.
    if (given.size() <= 16) {
        for (Tool* t : given)
            if (std::find(targets.begin(), targets.end(), t) == targets.end())
                targets.push_back(t);
        return;
    }
    std::unordered_set<Tool*> seen;
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
