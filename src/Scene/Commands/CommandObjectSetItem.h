// CommandObjectSetItem: a tool placed in the item slot of a composite.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectSetItem : public Command {
public:
    static constexpr int TYPE = 14;

    Tool* composite;
    Tool* item;
    bool wasObject; // the item's object state before it was placed
    int itemId;     // to tell whether the item still lives when this command goes

    CommandObjectSetItem(Tool* composite, Tool* item);
    // Undone and gone, it leaves the item out of the tree for good: abandoned.
    ~CommandObjectSetItem() override;

    // Empties the slot, clears the item's Parent and gives back its object state.
    void undo() override;
    // Fills the slot again, with the composite's object state.
    void redo() override;
    std::string name() override;
};

} // namespace vel
