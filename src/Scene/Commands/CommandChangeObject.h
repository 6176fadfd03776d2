// CommandChangeObject: the swap pattern for one target.
//
// The command and the live tool hold the two states between them; undo and redo both
// exchange them through `swap`, then move the done flag.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandChangeObject : public Command {
public:
    Tool* tool;

    CommandChangeObject(int type, Tool* tool);

    void undo() override;
    void redo() override;
    virtual void swap() = 0;
};

} // namespace vel
