// SuperCommand: commands that belong together, shown and undone as one step.
//
// A group stays open until `finish` closes it; while the group's last command is itself an
// open group, pushes and `finish` descend into it, so groups nest. The group owns its
// commands and destroys them from last to first.
#pragma once

#include "Scene/Command.h"

#include <string>
#include <vector>

namespace vel {

class SuperCommand : public Command {
public:
    static constexpr int TYPE = 1;

    std::vector<Command*> commands;
    std::string title; // the group's name
    bool finished = false;

    SuperCommand(std::string const& title, bool mergeable);
    ~SuperCommand() override;

    void undo() override;
    void redo() override;
    bool isSame(Command* previous) override;
    bool isSuper() override;
    bool isFinished() override;
    void finish() override;
    std::string name() override;

    // Appends to the innermost open group.
    void push(Command* command);

private:
    // The innermost open group: this one, or an open group at the end of it, recursively.
    SuperCommand* innermostOpen();
};

} // namespace vel
