// CommandObjectDelete: owns a tool that `remove` took out of the tree.
//
// While done the deletion stands and the tool is this command's: destroyed with it. Once
// undone the tool is back in the tree (by the commands recorded with the removal) and
// belongs to its parent again.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectDelete : public Command {
public:
    static constexpr int TYPE = 22;

    Tool* tool;
    int toolId; // to tell whether the tool still lives when this command goes

    explicit CommandObjectDelete(Tool* tool);
    ~CommandObjectDelete() override;

    std::string name() override;
};

} // namespace vel
