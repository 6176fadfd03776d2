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

// Groups merge only when every command folds into its opposite number: two drags of the
// same tools merge, two moves of different tools stay two steps. Empty groups hold nothing
// that could differ.
bool SuperCommand::isSame(Command* previous)
{
    if (!previous->isSuper() || previous->type != type)
        return false;
    auto* other = static_cast<SuperCommand*>(previous);
    size_t n = commands.size();
    if (other->commands.size() != n)
        return false;
    for (size_t i = 0; i < n; ++i) {
        commands[i]->mergeable = true;
        other->commands[i]->mergeable = true;
        if (!commands[i]->coincides(other->commands[i]))
            return false;
    }
    return true;
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
