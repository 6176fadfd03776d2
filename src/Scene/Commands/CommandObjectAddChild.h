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
    int position;   // where the child was appended
    bool wasObject; // the child's object state before it joined
    int childId;    // to tell whether the child still lives when this command goes

    CommandObjectAddChild(Tool* parent, Tool* child, int position);
    // Undone and gone, it leaves the child out of the tree for good: abandoned.
    ~CommandObjectAddChild() override;

    // Takes the child out again, clears its Parent and gives back its object state, so
    // that a redo finds everything as the first time.
    void undo() override;
    // Appends the child again, with the parent's object state.
    void redo() override;
    std::string name() override;
};

} // namespace vel
