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

std::string CommandTransformObjects::name()
{
    return "Transform Objects";
}

} // namespace vel
