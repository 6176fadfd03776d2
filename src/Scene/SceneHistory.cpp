#include "Scene/SceneHistory.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Scene/Command.h"
#include "Scene/Element.h"
#include "Scene/SuperCommand.h"

#include <algorithm>

namespace vel {

History::Pause::Pause()
    : wasActive(History::instance().active)
{
    History::instance().active = false;
}

History::Pause::~Pause()
{
    History::instance().active = wasActive;
}

History::~History()
{
    // At exit the signal hub may already be gone, and nothing should be recorded any more.
    notify = false;
    enabled = false;
    clear();
}

void History::push(Command* command)
{
    VEL_ASSERT(command);
    if (!recording()) {
        delete command;
        return;
    }
    discardRedoTail();
    // Into an open group before any eviction: the group grows, the count of steps does not.
    if (!commands.empty() && commands.back()->isSuper() && !commands.back()->isFinished()) {
        static_cast<SuperCommand*>(commands.back())->push(command);
        return;
    }
    // `while`, not `if`: the capacity may have been lowered below the count.
    while (commands.size() >= capacity && !commands.empty()) {
        dropped.push_back(commands.front());
        commands.pop_front();
        if (currentIndex >= 0)
            --currentIndex;
        if (notify)
            emit Communicate::instance().historyPopFront();
    }
    discardRedoTail();
    commands.push_back(command);
    ++currentIndex;
    if (mergeNewest())
        return;
    if (notify)
        emit Communicate::instance().historyUpdate();
}

// Each superBegin is paired with the next unmatched superEnd, whether or not recording was
// on at either call: a group opened while recording is closed by its own superEnd even if
// recording went off in between, and a superEnd whose superBegin opened nothing closes
// nothing.
void History::superBegin(std::string const& name, bool mergeable)
{
    bool opens = recording();
    openings.push_back(opens);
    if (!opens)
        return;
    discardRedoTail();
    push(new SuperCommand(name, mergeable));
    ++Command::depth;
}

void History::superEnd()
{
    if (openings.empty())
        return;
    bool opened = openings.back();
    openings.pop_back();
    if (!opened)
        return;
    --Command::depth;
    if (commands.empty())
        return;
    commands.back()->finish();
    mergeNewest();
}

void History::collapse()
{
    if (!commands.empty())
        mergeNewest();
}

bool History::pop()
{
    if (commands.empty())
        return false;
    Command* command = commands.back();
    commands.pop_back();
    delete command;
    int last = int(commands.size()) - 1;
    if (currentIndex > last)
        currentIndex = last;
    if (notify)
        emit Communicate::instance().historyPop();
    return true;
}

void History::cleanup()
{
    discardRedoTail();
}

void History::undo()
{
    if (!recording() || currentIndex < 0)
        return;
    step(commands[currentIndex], false);
    --currentIndex;
}

void History::redo()
{
    if (!recording() || currentIndex + 1 >= int(commands.size()))
        return;
    ++currentIndex;
    step(commands[currentIndex], true);
}

void History::jumpTo(int target)
{
    target = std::clamp(target, -1, int(commands.size()) - 1);
    while (currentIndex < target) {
        ++currentIndex;
        step(commands[currentIndex], true);
    }
    while (currentIndex > target) {
        step(commands[currentIndex], false);
        --currentIndex;
    }
}

Command* History::current() const
{
    if (currentIndex < 0 || currentIndex >= int(commands.size()))
        return nullptr;
    return commands[currentIndex];
}

void History::clear()
{
    while (!commands.empty()) {
        Command* command = commands.back();
        commands.pop_back();
        delete command;
        if (notify)
            emit Communicate::instance().historyPop();
    }
    currentIndex = -1;
    while (!dropped.empty()) {
        Command* command = dropped.back();
        dropped.pop_back();
        delete command;
    }
    Command::depth = 0;
    openings.clear();
}

void History::discardRedoTail()
{
    while (currentIndex + 1 < int(commands.size())) {
        // Off the list before destruction: a destructor may destroy a tool, whose own
        // teardown must find the list consistent.
        Command* command = commands.back();
        commands.pop_back();
        delete command;
        if (currentIndex == int(commands.size()))
            --currentIndex;
        if (notify)
            emit Communicate::instance().historyPop();
    }
}

// A group merges only once closed: an open one still collects what is pushed.
bool History::mergeNewest()
{
    Command* newest = commands.back();
    if (!newest->isFinished())
        return false;
    Command* previous = commands.size() > 1 ? commands[commands.size() - 2] : nullptr;
    if (!newest->coincides(previous))
        return false;
    commands.pop_back();
    --currentIndex;
    dropped.push_back(newest);
    return true;
}

void History::step(Command* command, bool forward)
{
    Pause pause;
    if (forward)
        command->redo();
    else
        command->undo();
    // Any step may have restored or exchanged geometry.
    Element::advanceUpdate();
}

} // namespace vel
