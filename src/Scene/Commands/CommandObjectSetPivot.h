// CommandObjectSetPivot: a tool's pivot matrix, exchanged with the one it holds.
#pragma once

#include "Math/Matrix34.h"
#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectSetPivot : public Command {
public:
    static constexpr int TYPE = 16;

    Tool* tool;
    Matrix34<double> pivot; // the value that is not on the tool right now

    CommandObjectSetPivot(Tool* tool, Matrix34<double> const& pivot);

    void undo() override;
    void redo() override;
    std::string name() override;
    // Exchanges the held pivot with the tool's.
    void swap();
};

} // namespace vel
