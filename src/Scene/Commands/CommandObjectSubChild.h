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
    int position;   // where the child stood
    bool wasObject; // the child's object state when it left

    CommandObjectSubChild(Tool* parent, Tool* child, int position);

    // Puts the child back at its position, with the object state it left with: a child
    // may differ from its parent there (a copy, a parent moved since), and undo gives back
    // exactly what was.
    void undo() override;
    // Takes the child out again, noting where it stood and its object state.
    void redo() override;
    std::string name() override;
};

} // namespace vel
