#include "Scene/Commands/CommandSDFSavePriorityGroup.h"

#include "Scene/Tools/SDFTool/SDFTool.h"

#include <utility>

namespace vel {

CommandSDFSavePriorityGroup::CommandSDFSavePriorityGroup(SDFTool* tool)
    : CommandChangeObject(TYPE, tool)
    , priority(tool->sdf.priority)
    , bracket(tool->sdf.bracket)
{
}

void CommandSDFSavePriorityGroup::swap()
{
    SDFObj& live = static_cast<SDFTool*>(tool)->sdf;
    std::swap(live.priority, priority);
    std::swap(live.bracket, bracket);
}

std::string CommandSDFSavePriorityGroup::name()
{
    return "SDF Priority Group";
}

} // namespace vel
