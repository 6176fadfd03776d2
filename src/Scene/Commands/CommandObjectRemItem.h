// CommandObjectRemItem: a tool taken out of the item slot of a composite.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectRemItem : public Command {
public:
    static constexpr int TYPE = 15;

    Tool* composite;
    Tool* item;

    CommandObjectRemItem(Tool* composite, Tool* item);

    // Fills the slot and sets the item's Parent again.
    void undo() override;
    // Takes the slot's tool out again: the slot and its Parent are cleared.
    void redo() override;
    std::string name() override;
};

} // namespace vel
