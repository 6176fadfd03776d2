// CommandSDFSave: the parameters of one SDF primitive, swapped.
//
// Holds the whole SDFObj from before a change and the index of the field that changed
// (SDFObj::difference), so that the frames of one slider drag fold into one step. Priority
// and bracket are not swapped: CommandSDFSavePriorityGroup owns them, and a swap of both
// kinds would undo a regrouping that a later command made.
#pragma once

#include "Scene/Commands/CommandChangeObject.h"
#include "Scene/Tools/SDFTool/SDFObj.h"

namespace vel {

class SDFTool;

class CommandSDFSave : public CommandChangeObject {
public:
    static constexpr int TYPE = 60;
    SDFObj values;
    int field; // the first field that differs between the two states; -1 for none

    // `before` is the tool's state before the change, which is already made.
    CommandSDFSave(SDFTool* tool, SDFObj const& before);
    void swap() override;
    bool isSame(Command* previous) override;
    std::string name() override;
};

} // namespace vel
