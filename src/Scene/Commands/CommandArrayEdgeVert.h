// CommandArrayEdgeVert: the Tab toggle of an array between instances on vertices and on edge
// middles (and of a snake's items mode bit 0). Made after the flip; undo and redo flip again.
#pragma once

#include "Scene/Command.h"

#include <string>

namespace vel {

class Tool;

class CommandArrayEdgeVert : public Command {
public:
    static constexpr int TYPE = 67;

    int toolId;   // to tell whether the tool still lives
    Tool* tool;

    explicit CommandArrayEdgeVert(Tool* tool);

    void undo() override;
    void redo() override;
    std::string name() override;
    // Flips the mode of `tool` (an array's edge mode, a snake's items mode bit 0).
    static void Flip(Tool* tool);
    // Flips the mode of `tool` when it is an array and records it: the Tab key.
    static bool Toggle(Tool* tool);
};

} // namespace vel
