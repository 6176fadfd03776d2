// GLMachine: the standard way to prepare a draw. The caller lists shader, source textures
// and target; enable() compiles them all first, so that a failure binds nothing, then binds
// them in list order. disable() walks the list backwards, which makes texture units behave as
// a stack (Texture::enable takes the next free unit, disable gives it back).
//
//     GLMachine m{shader, source, target};
//     VEL_ASSERT(m.enable());
#pragma once

#include "OpenGL/GLAtom.h"

#include <deque>
#include <initializer_list>

namespace vel {

class GLMachine {
public:
    std::deque<GLAtom*> atoms; // in binding order; null entries are skipped
    bool enabled = false;      // true between a successful enable() and disable()

    GLMachine() = default;
    GLMachine(std::initializer_list<GLAtom*> list);
    GLMachine(GLMachine const&) = delete;
    GLMachine& operator=(GLMachine const&) = delete;
    ~GLMachine();

    void add(GLAtom* atom) { atoms.push_back(atom); }

    // True at once when already enabled. Compiles every atom (false at the first failure,
    // nothing bound), then enables each; a failed enable disables what was enabled.
    bool enable();
    // Disables every atom, last first.
    void disable();
};

} // namespace vel
