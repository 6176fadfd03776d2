#include "Scene/Commands/CommandTransformObjects.h"

#include "Scene/Tool.h"

namespace vel {

CommandTransformObjects::CommandTransformObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , objects(capture(&Tool::objectMatrix))
    , pivots(capture(&Tool::pivotMatrix))
{
}

void CommandTransformObjects::swap()
{
    exchange(objects, &Tool::objectMatrix);
    exchange(pivots, &Tool::pivotMatrix);
}

// One drag on one selection: the older command keeps the matrices from before the drag, the
// tools have the newest.
bool CommandTransformObjects::isSame(Command* previous)
{
    return static_cast<CommandTransformObjects*>(previous)->targets == targets;
}

std::string CommandTransformObjects::name()
{
    return "Transform Objects";
}

} // namespace vel
