// CommandObjectAddChild: a tool appended to a parent's children.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectAddChild : public Command {
public:
    static constexpr int TYPE = 11;

    Tool* parent;
    Tool* child;
    int position; // where the child was appended

    CommandObjectAddChild(Tool* parent, Tool* child, int position);

    // Takes the child out again and clears its Parent.
    void undo() override;
    // Appends the child again, with the parent's object state.
    void redo() override;
    std::string name() override;
};

} // namespace vel
