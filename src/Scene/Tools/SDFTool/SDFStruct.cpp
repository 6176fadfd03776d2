#include "Scene/Tools/SDFTool/SDFStruct.h"

#include "Scene/Tools/SDFTool/SDFTool.h"

namespace vel {

bool SDFStruct::is_temp() const
{
    return temporary || (tool && tool->temporary);
}

int16_t SDFStruct::prio() const
{
    return is_temp() || !tool ? priority : tool->sdf.priority;
}

int16_t SDFStruct::bracket() const
{
    return is_temp() || !tool ? bracketCount : tool->sdf.bracket;
}

int32_t SDFStruct::SelectionID() const
{
    uint32_t id = uint32_t(selection + 1);
    if (tool && (tool->flags & Tool::FLAG_SELECTED))
        id |= 0x80000000u;
    return int32_t(id);
}

} // namespace vel
