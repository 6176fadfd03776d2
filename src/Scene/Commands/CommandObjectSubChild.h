// CommandObjectSubChild: a tool taken out of a parent's children.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectSubChild : public Command {
public:
    static constexpr int TYPE = 12;

    Tool* parent;
    Tool* child;
    int position; // where the child stood

    CommandObjectSubChild(Tool* parent, Tool* child, int position);

    // Puts the child back at its position, with the parent's object state.
    void undo() override;
    // Takes the child out again, noting where it stood.
    void redo() override;
    std::string name() override;
};

} // namespace vel
