#include "GLResourceTest.h"

#include <cstring>
#include <type_traits>

#include "OpenGL/FBO.h"
#include "OpenGL/GLState.h"
#include "OpenGL/LogMsg.h"
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture.h"
#include "OpenGL/TextureManager.h"

namespace vel::test {

namespace {

std::vector<std::string> gMessages;

void Collect(std::string const& text, bool)
{
    gMessages.push_back(text);
}

// Call counts of the wrapped entry points.
struct Counts {
    int getUniformLocation = 0;
    int useProgram = 0;
    int bindFramebuffer = 0;
    int enableDisable = 0;
    int bufferData = 0;
    int bufferSubData = 0;
    int created = 0;
    std::vector<unsigned> programs;
};
Counts gCounts;

// One wrapped entry point: the wrapper counts into `Field` and calls the real function, which
// install() puts aside and remove() puts back into glad's pointer.
template <auto* Slot, int Counts::*Field, class F = std::remove_reference_t<decltype(*Slot)>>
struct Hook;

template <auto* Slot, int Counts::*Field, class R, class... A>
struct Hook<Slot, Field, R(GLAD_API_PTR*)(A...)> {
    static inline R(GLAD_API_PTR* real)(A...) = nullptr;

    static R GLAD_API_PTR call(A... a)
    {
        ++(gCounts.*Field);
        if constexpr (Field == &Counts::useProgram)
            gCounts.programs.push_back(a...);
        return real(a...);
    }
    static void install()
    {
        real = *Slot;
        *Slot = call;
    }
    static void remove() { *Slot = real; }
};

template <class... H>
struct Hooks {
    static void install() { (H::install(), ...); }
    static void remove() { (H::remove(), ...); }
};

using CountedCalls = Hooks<Hook<&glad_glGetUniformLocation, &Counts::getUniformLocation>,
                           Hook<&glad_glUseProgram, &Counts::useProgram>,
                           Hook<&glad_glBindFramebuffer, &Counts::bindFramebuffer>,
                           Hook<&glad_glEnable, &Counts::enableDisable>, Hook<&glad_glDisable, &Counts::enableDisable>,
                           Hook<&glad_glBufferData, &Counts::bufferData>,
                           Hook<&glad_glBufferSubData, &Counts::bufferSubData>,
                           Hook<&glad_glGenTextures, &Counts::created>, Hook<&glad_glGenFramebuffers, &Counts::created>,
                           Hook<&glad_glTexImage2D, &Counts::created>>;

// Managers hold GL objects: let them go while the context still exists.
class ReleaseManagers : public ::testing::Environment {
public:
    void TearDown() override
    {
        if (!MakeGLContextCurrent())
            return;
        ShaderManager::instance().shaders.clear();
        TextureManager::instance().clear();
    }
};
::testing::Environment* const gReleaseManagers = ::testing::AddGlobalTestEnvironment(new ReleaseManagers);

} // namespace

void GLResourceTest::SetUp()
{
    GLTest::SetUp();
    InitResources();
    gMessages.clear();
    gLogMsgSink = Collect;
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    // Each test starts from GL's defaults, and the mirrors say so.
    glUseProgram(0);
    Shader::id = 0;
    Shader::Current = nullptr;
    FBO::disable(fbBoth);
    Texture::GLActiveTexture = 0;
    gl_Depth_Test.set(false, true);
    gl_Cull_Face.set(false, true);
    gl_Stencil_Test.set(false, true);
    glDisable(GL_BLEND);
}

void GLResourceTest::TearDown()
{
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
    gLogMsgSink = nullptr;
    GLTest::TearDown();
}

std::vector<std::string>& GLResourceTest::Messages()
{
    return gMessages;
}

bool GLResourceTest::Logged(std::string const& text)
{
    for (std::string const& m : gMessages)
        if (m.find(text) != std::string::npos)
            return true;
    return false;
}

GLCallCounter::GLCallCounter()
{
    gCounts = Counts();
    CountedCalls::install();
}

GLCallCounter::~GLCallCounter()
{
    CountedCalls::remove();
}

int GLCallCounter::getUniformLocation() const { return gCounts.getUniformLocation; }
int GLCallCounter::useProgram() const { return gCounts.useProgram; }
int GLCallCounter::bindFramebuffer() const { return gCounts.bindFramebuffer; }
int GLCallCounter::enableDisable() const { return gCounts.enableDisable; }
int GLCallCounter::bufferData() const { return gCounts.bufferData; }
int GLCallCounter::bufferSubData() const { return gCounts.bufferSubData; }
int GLCallCounter::created() const { return gCounts.created; }
std::vector<unsigned> const& GLCallCounter::programs() const { return gCounts.programs; }
void GLCallCounter::reset() { gCounts = Counts(); }

std::vector<std::vector<uint32_t>> CaptureFeedback(std::vector<int> const& components, int count)
{
    // Even with the rasterizer off, a draw needs a complete framebuffer, and this context has
    // no default one.
    FBO scratch(dsNone, 1, 1);
    bool ownTarget = FBO::DRAW_ID == 0;
    if (ownTarget) {
        scratch.addColor(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE);
        scratch.enableDraw();
    }
    std::vector<GLuint> buffers(components.size());
    glGenBuffers(GLsizei(buffers.size()), buffers.data());
    for (size_t i = 0; i < buffers.size(); ++i) {
        glBindBuffer(GL_TRANSFORM_FEEDBACK_BUFFER, buffers[i]);
        glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, GLsizeiptr(components[i] * count * 4), nullptr, GL_STATIC_READ);
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, GLuint(i), buffers[i]);
    }
    glEnable(GL_RASTERIZER_DISCARD);
    glBeginTransformFeedback(GL_POINTS);
    glDrawArrays(GL_POINTS, 0, count);
    glEndTransformFeedback();
    glDisable(GL_RASTERIZER_DISCARD);
    std::vector<std::vector<uint32_t>> words(components.size());
    for (size_t i = 0; i < buffers.size(); ++i) {
        words[i].resize(size_t(components[i] * count));
        glBindBuffer(GL_TRANSFORM_FEEDBACK_BUFFER, buffers[i]);
        glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0, GLsizeiptr(words[i].size() * 4), words[i].data());
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, GLuint(i), 0);
    }
    glBindBuffer(GL_TRANSFORM_FEEDBACK_BUFFER, 0);
    glDeleteBuffers(GLsizei(buffers.size()), buffers.data());
    if (ownTarget)
        FBO::disable(fbDraw);
    return words;
}

float AsFloat(uint32_t word)
{
    float f;
    std::memcpy(&f, &word, 4);
    return f;
}

std::vector<unsigned char> ReadColor(int attachment, int width, int height)
{
    glReadBuffer(GLenum(attachment));
    return ReadPixelsRGBA(0, 0, width, height);
}

std::vector<float> ReadColorFloat(int attachment, int width, int height)
{
    glReadBuffer(GLenum(attachment));
    std::vector<float> pixels(size_t(width) * size_t(height) * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_FLOAT, pixels.data());
    return pixels;
}

} // namespace vel::test
