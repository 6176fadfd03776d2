#include "Scene/Command.h"

namespace vel {

int Command::GlobalID = 0;
int Command::depth = 0;

Command::Command(int type)
    : type(type)
    , id(GlobalID++)
{
}

Command::~Command() = default;

void Command::undo()
{
    done = false;
}

void Command::redo()
{
    done = true;
}

int Command::size()
{
    return 0;
}

bool Command::isSameType(Command* previous)
{
    return previous && previous->type == type;
}

bool Command::isSame(Command*)
{
    return false;
}

bool Command::coincides(Command* previous)
{
    if (!mergeable || !previous || !previous->mergeable || !isSameType(previous))
        return false;
    return isSame(previous);
}

bool Command::isSuper()
{
    return false;
}

bool Command::isFinished()
{
    return true;
}

void Command::finish()
{
}

std::string Command::name()
{
    return "Command";
}

} // namespace vel
