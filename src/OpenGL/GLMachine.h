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
#include <string>
#include <initializer_list>

namespace vel {

class GLMachine {
public:
    std::deque<GLAtom*> atoms; // in binding order; null entries are skipped
    bool enabled = false;      // true between a successful enable() and disable()

    // A debug check for the GL tests, off by default: at each enable(), a texture of the list
    // that is also attached to the bound draw framebuffer (its depth or stencil, or a colour
    // target its draw buffers select) is a feedback loop, whose result GL leaves undefined:
    // one driver reads the texel, another a stale or compressed one. Each is counted, and the
    // last is described in feedbackReport.
    static bool checkFeedback;
    static int feedbackLoops;
    static std::string feedbackReport;

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
