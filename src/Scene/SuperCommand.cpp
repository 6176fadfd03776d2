#include "Scene/SuperCommand.h"

#include "Core/Assert.h"

namespace vel {

SuperCommand::SuperCommand(std::string const& title, bool mergeable)
    : Command(TYPE)
    , title(title)
{
    this->mergeable = mergeable;
}

SuperCommand::~SuperCommand()
{
    // Last to first: a later command may still refer to what an earlier one owns.
    for (auto it = commands.rbegin(); it != commands.rend(); ++it)
        delete *it;
}

void SuperCommand::undo()
{
    for (auto it = commands.rbegin(); it != commands.rend(); ++it)
        (*it)->undo();
    Command::undo();
}

void SuperCommand::redo()
{
    for (Command* command : commands)
        command->redo();
    Command::redo();
}

// Groups of two, and empty groups, merge with any group of the same size without a look
// inside; longer groups compare command by command, all but the last two.
bool SuperCommand::isSame(Command* previous)
{
    if (!previous->isSuper() || previous->type != type)
        return false;
    auto* other = static_cast<SuperCommand*>(previous);
    size_t n = commands.size();
    if (other->commands.size() != n)
        return false;
    if (n == 2 || n == 0)
        return true;
    bool all = true;
    for (size_t i = 0; i + 2 < n; ++i) {
        commands[i]->mergeable = true;
        if (!commands[i]->coincides(other->commands[i]))
            all = false;
    }
    return all;
}

bool SuperCommand::isSuper()
{
    return true;
}

bool SuperCommand::isFinished()
{
    return finished;
}

void SuperCommand::finish()
{
    innermostOpen()->finished = true;
}

std::string SuperCommand::name()
{
    return title;
}

void SuperCommand::push(Command* command)
{
    VEL_ASSERT(command);
    innermostOpen()->commands.push_back(command);
}

SuperCommand* SuperCommand::innermostOpen()
{
    SuperCommand* group = this;
    while (!group->commands.empty() && group->commands.back()->isSuper() && !group->commands.back()->isFinished())
        group = static_cast<SuperCommand*>(group->commands.back());
    return group;
}

} // namespace vel
