#include "OpenGL/Environment.h"

#include "Core/Assert.h"
#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"

#include <algorithm>
#include <cmath>

namespace vel {

Environment::Environment(int size, int levels)
    : TextureCube(size, GL_RGB32F, GL_RGB, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_LINEAR)
    , size(size)
    , levels(levels)
{
}

Environment::Environment(std::string const& path, int size, int levels)
    : Environment(size, levels)
{
    load(path);
}

bool Environment::load(std::string const& path)
{
    return loadhdr(path);
}

int Environment::maxLevel() const
{
    int top = 0;
    while (top + 1 < levels && (size >> (top + 1)) >= 1)
        ++top;
    return top;
}

void Environment::clear()
{
    // Deleting the GL texture frees every level; the next compile fills them again.
    TextureCube::clear();
}

bool Environment::compile()
{
    if (Compiled)
        return true;
    if (loadFailed)
        return false;
    VEL_ASSERT(TextureCube::compile());
    filterLevels();
    return Compiled;
}

void Environment::rotation(int face, Matrix3<float>& rotation)
{
    // Rows are the images of x, y and z: (x, y, -1) R must be GL's direction of the face texel
    // at (x, y), e.g. (1, -y, -x) on +X (see TextureCube::FaceDirection).
    static Matrix3<float> const faces[6] = {
        {0, 0, -1, 0, -1, 0, -1, 0, 0}, // +X
        {0, 0, 1, 0, -1, 0, 1, 0, 0},   // -X
        {1, 0, 0, 0, 0, 1, 0, -1, 0},   // +Y
        {1, 0, 0, 0, 0, -1, 0, 1, 0},   // -Y
        {1, 0, 0, 0, -1, 0, 0, 0, -1},  // +Z
        {-1, 0, 0, 0, -1, 0, 0, 0, 1},  // -Z
    };
    if (face >= 0 && face < 6)
        rotation = faces[face];
}

namespace {

// Draws the full-screen pass once into each face of `cube` at `level`, through the bound draw
// framebuffer; the shader and its samplers are enabled by the caller.
void DrawFaces(unsigned cube, int level)
{
    for (int face = 0; face < 6; ++face) {
        glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face),
                               cube, level);
        VEL_ASSERT(glCheckFramebufferStatus(GL_DRAW_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE);
        Matrix3<float> r;
        Environment::rotation(face, r);
        Shader::setUniform("Rotation", r);
        GLFill();
    }
}

} // namespace

void Environment::sampleLevels(int base, int top)
{
    unsigned previous = bindForUpload();
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_BASE_LEVEL, base);
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, top);
    endUpload(previous);
}

void Environment::filterLevels()
{
    int const top = maxLevel();
    // Storage of every level first, so that the cube stays complete while levels are written.
    unsigned previous = bindForUpload();
    for (int level = 1; level <= top; ++level)
        for (int face = 0; face < 6; ++face)
            glTexImage2D(GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face), level, internalFormat, size >> level,
                         size >> level, 0, GLenum(format), GLenum(type), nullptr);
    endUpload(previous);
    if (top == 0)
        return;

    // The passes use a framebuffer of their own and their own shaders: the mirrors are cleared
    // so that the caller's next enable binds its own again.
    int viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    Shader::Current = nullptr;
    Shader::id = 0;
    FBO::disable(fbDraw);
    unsigned framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    glDrawBuffer(GL_COLOR_ATTACHMENT0);
    glDisable(GL_BLEND);
    gl_Depth_Test.set(false);
    // Taps near a face's edge read the neighbouring face.
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);

    ShaderManager& shaders = ShaderManager::instance();
    Matrix4<float> const identity;
    for (int level = 1; level <= top; ++level) {
        int const side = size >> level;
        glViewport(0, 0, side, side);
        // Downsample: the level above, alone visible to sampling (so that writing this level
        // is no feedback loop), halved into a working cube; linear filtering averages 2 x 2.
        TextureCube work(side, internalFormat, format, type, GL_CLAMP_TO_EDGE, GL_LINEAR);
        {
            sampleLevels(level - 1, level - 1);
            GLMachine m{shaders.ShaderCopySkyBox, this};
            VEL_ASSERT(m.enable());
            Shader::setUniform("ProjectionModelViewMatrix", identity);
            Shader::setUniform("box", activeTexture());
            DrawFaces(work.id(), 0);
        }
        sampleLevels(0, top);
        // Filter: seven taps of the working cube, a ring one texel of this level wide.
        float samples[7 * 3] = {0, 0, -1};
        float const radius = 2.0f / float(side);
        for (int i = 1; i <= 6; ++i) {
            float angle = float(i) * float(2 * M_PI / 6);
            Vector3<float> s = Vector3<float>(radius * std::cos(angle), radius * std::sin(angle), -1).normalize();
            samples[3 * i] = s.x;
            samples[3 * i + 1] = s.y;
            samples[3 * i + 2] = s.z;
        }
        GLMachine m{shaders.ShaderFilterSkyBox, &work};
        VEL_ASSERT(m.enable());
        Shader::setUniform("ProjectionModelViewMatrix", identity);
        Shader::setUniform("box", work.activeTexture());
        Shader::setUniformArray("samples", 3, samples, 7);
        DrawFaces(textureId, level);
    }

    glDeleteFramebuffers(1, &framebuffer);
    FBO::disable(fbBoth);
    previous = bindForUpload();
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    endUpload(previous);
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    GLInit();
}

} // namespace vel
