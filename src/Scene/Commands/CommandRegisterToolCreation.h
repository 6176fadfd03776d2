// CommandRegisterToolCreation: the creation of a tool as a step of the history.
//
// Once undone the creation is taken back and the tool, out of the tree by then, is this
// command's: destroyed with it, since it can no longer be redone. While done the tool
// belongs to the tree or to its maker, except when its placement was undone and cut off
// (Tool::Abandoned): then no step is left to bring it back, and this command destroys it.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandRegisterToolCreation : public Command {
public:
    static constexpr int TYPE = 2;

    Tool* tool;
    int toolId; // to tell whether the tool still lives when this command goes

    explicit CommandRegisterToolCreation(Tool* tool);
    ~CommandRegisterToolCreation() override;

    std::string name() override;
};

} // namespace vel
