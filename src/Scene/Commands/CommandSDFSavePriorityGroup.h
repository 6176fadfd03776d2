// CommandSDFSavePriorityGroup: the priority and bracket count of one SDF primitive,
// swapped. Every regrouping of an SDF tree is a run of these.
#pragma once

#include "Scene/Commands/CommandChangeObject.h"

#include <cstdint>

namespace vel {

class SDFTool;

class CommandSDFSavePriorityGroup : public CommandChangeObject {
public:
    static constexpr int TYPE = 61;
    int16_t priority;
    int16_t bracket;

    // Takes the tool's present pair; the caller then changes the tool and pushes.
    explicit CommandSDFSavePriorityGroup(SDFTool* tool);
    void swap() override;
    std::string name() override;
};

} // namespace vel
