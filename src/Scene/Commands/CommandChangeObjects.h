// CommandChangeObjects: the swap pattern for many targets.
//
// A derived class holds one value per target, in the order of `targets`, and exchanges
// them with the live fields in `swap`; undo and redo both swap, then move the done flag.
// Built with the targets' present values; the caller changes the tools and pushes it.
#pragma once

#include "Scene/Command.h"
#include "Scene/Tool.h"

#include <deque>
#include <utility>
#include <vector>

namespace vel {

class CommandChangeObjects : public Command {
public:
    std::vector<Tool*> targets; // each tool once

    // Keeps the first of repeated tools.
    CommandChangeObjects(int type, std::vector<Tool*> const& targets);

    void undo() override;
    void redo() override;
    virtual void swap() = 0;

protected:
    // The present value of `field` on every target.
    template <class T>
    std::deque<T> capture(T Tool::*field) const
    {
        std::deque<T> values;
        for (Tool* t : targets)
            values.push_back(t->*field);
        return values;
    }

    template <class T>
    void exchange(std::deque<T>& values, T Tool::*field)
    {
        for (size_t i = 0; i < targets.size(); ++i)
            std::swap(targets[i]->*field, values[i]);
    }
};

} // namespace vel
