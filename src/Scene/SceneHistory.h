// History: the undo list of the scene, a singleton.
//
// Invariants:
// - `currentIndex` is from -1 to commands.size() - 1: the newest command that is done. The
//   commands after it are the redo tail, and the next push destroys them.
// - Nothing is recorded unless both `enabled` (off around loading and exit) and `active`
//   (off for short stretches, restored after) are true; a command pushed then is destroyed
//   at once, so code that makes commands never needs to ask first.
// - At most `capacity` top-level steps. A step that falls off the front, and a command
//   that merges into the one before it, leave the list without being destroyed: what they
//   hold may be in use by the scene (a merged command's target, a deleted tool that still
//   counts), so they wait in `dropped` until the history is cleared (a load, the close of
//   the window) or destroyed. Neither path ever runs `undo` on them again.
#pragma once

#include "Memory/Singleton.h"

#include <deque>
#include <string>
#include <vector>

namespace vel {

class Command;

class History : public Singleton<History> {
public:
    bool enabled = true;
    bool notify = true; // send the history signals of Communicate to the interface
    unsigned int capacity = 1000;
    int currentIndex = -1; // the newest done command
    bool active = true;
    std::deque<Command*> commands;
    std::vector<Command*> dropped; // left the list without destruction; freed by clear()
    // One entry per superBegin not yet matched by a superEnd: whether it opened a group.
    std::vector<bool> openings;

    // Switches `active` off for its own lifetime and restores the earlier value.
    class Pause {
    public:
        Pause();
        ~Pause();
        Pause(Pause const&) = delete;
        Pause& operator=(Pause const&) = delete;

    private:
        bool wasActive;
    };

    History() = default;
    ~History() override;

    bool recording() const { return enabled && active; }

    void push(Command* command);
    void superBegin(std::string const& name, bool mergeable);
    void superEnd();
    // The merge test of the newest command against the one before it.
    void collapse();
    bool pop();
    // Destroys the redo tail.
    void cleanup();
    void undo();
    void redo();
    // Undoes or redoes up to index `target`, clamped to -1 .. count - 1.
    void jumpTo(int target);
    // The command at currentIndex, or null when there is none.
    Command* current() const;
    // Destroys every command, newest first, then the dropped ones; current becomes -1.
    void clear();

private:
    void discardRedoTail();
    bool mergeNewest();
    // Runs undo or redo with recording off, so that nothing pushed from inside a command
    // can cut the list it is walking.
    void step(Command* command, bool forward);
};

} // namespace vel
