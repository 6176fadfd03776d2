// CommandObjectUnlink: a tool taken out of its ring, after `previous`.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectUnlink : public Command {
public:
    static constexpr int TYPE = 19;

    Tool* tool;
    Tool* previous; // the ring member whose next the tool was

    CommandObjectUnlink(Tool* tool, Tool* previous);

    // Puts the tool back into the ring after `previous`.
    void undo() override;
    // Takes it out again; it becomes a ring of its own.
    void redo() override;
    std::string name() override;
};

} // namespace vel
