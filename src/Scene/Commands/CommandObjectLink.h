// CommandObjectLink: two rings joined by exchanging the next pointers of one member each.
// The same exchange splits them again, so undo and redo are one operation.
#pragma once

#include "Scene/Command.h"

namespace vel {

class Tool;

class CommandObjectLink : public Command {
public:
    static constexpr int TYPE = 18;

    Tool* first;
    Tool* second;

    CommandObjectLink(Tool* first, Tool* second);

    void undo() override;
    void redo() override;
    std::string name() override;
};

} // namespace vel
