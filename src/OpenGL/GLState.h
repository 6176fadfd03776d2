// GLState: a cached on/off GL capability. Every switch of depth test, culling and stencil
// test goes through the three globals below, so a pass can set what it needs without asking
// GL and without repeating calls that would change nothing.
#pragma once

#include <glad/gl.h>

namespace vel {

class GLState {
public:
    GLenum capability; // e.g. GL_DEPTH_TEST
    bool value;        // what GL has now, as far as this mirror knows

    GLState(GLenum capability, bool value);

    // glEnable/glDisable unless the mirror already holds `value` (and `force` is false).
    void set(bool value, bool force = false);
};

// The mirrors start at GL's own defaults: all three off.
extern GLState gl_Depth_Test;
extern GLState gl_Cull_Face;
extern GLState gl_Stencil_Test;

// Reads real GL state back into every mirror: the program in use (Shader::id; Shader::Current
// is dropped unless it owns that program), the draw and read framebuffers (FBO::DRAW_ID,
// FBO::READ_ID), the three capabilities above, and the texture units (a texture whose unit
// foreign code rebound is no longer bound; Texture::GLActiveTexture follows). Call it after
// foreign code has drawn (the UI's renderer), whose GL calls bypass the mirrors. It changes no
// GL state.
void ResyncGLMirrors();

} // namespace vel
