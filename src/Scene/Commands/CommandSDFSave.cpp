#include "Scene/Commands/CommandSDFSave.h"

#include "Scene/Tools/SDFTool/SDFTool.h"

#include <utility>

namespace vel {

CommandSDFSave::CommandSDFSave(SDFTool* tool, SDFObj const& before)
    : CommandChangeObject(TYPE, tool)
    , values(before)
    , field(before.difference(tool->sdf))
{
}

void CommandSDFSave::swap()
{
    SDFObj& live = static_cast<SDFTool*>(tool)->sdf;
    SDFObj keep = values;
    values = live;
    keep.priority = live.priority;
    keep.bracket = live.bracket;
    live = keep;
}

// The older command keeps the state from before the drag; the tool has the newest.
bool CommandSDFSave::isSame(Command* previous)
{
    auto* older = static_cast<CommandSDFSave*>(previous);
    return older->tool == tool && older->field == field;
}

std::string CommandSDFSave::name()
{
    return "SDF Parameters";
}

} // namespace vel
