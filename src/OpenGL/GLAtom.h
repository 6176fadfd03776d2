// GLAtom: the life cycle every GPU object of the system shares.
//
// An atom is *described* on the CPU at any time, on any thread (constructors, load, copy
// make no GL call), and *compiled* (its GL objects made) only on first use, on the thread
// that owns the GL context. The three calls below are all a GLMachine needs to prepare a draw.
#pragma once

namespace vel {

class GLAtom {
public:
    // Makes the GL object if needed; true when it is usable. Idempotent.
    virtual bool compile() = 0;
    // Compiles if needed, then binds; false when compiling failed.
    virtual bool enable() = 0;
    // Unbinds.
    virtual void disable() = 0;
    virtual ~GLAtom() = default;
};

} // namespace vel
