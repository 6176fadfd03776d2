#include "Support/GLTestContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstring>
#include <string>

namespace vel::test {

namespace {

struct ContextState {
    bool tried = false;
    bool ok = false;
    std::string error;
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
};

ContextState& State()
{
    static ContextState state;
    return state;
}

GLADapiproc LoadProc(const char* name)
{
    return reinterpret_cast<GLADapiproc>(eglGetProcAddress(name));
}

bool Fail(ContextState& s, std::string const& why)
{
    s.error = why;
    s.ok = false;
    return false;
}

bool Create(ContextState& s)
{
    auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!getPlatformDisplay)
        return Fail(s, "eglGetPlatformDisplayEXT is missing");
    s.display = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (s.display == EGL_NO_DISPLAY)
        return Fail(s, "no surfaceless EGL display");
    EGLint major = 0, minor = 0;
    if (!eglInitialize(s.display, &major, &minor))
        return Fail(s, "eglInitialize failed");
    if (!eglBindAPI(EGL_OPENGL_API))
        return Fail(s, "eglBindAPI(EGL_OPENGL_API) failed");

    const EGLint configAttributes[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                       EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(s.display, configAttributes, &config, 1, &count);
    // Surfaceless contexts need no config; KHR_no_config_context lets us pass none.
    if (count == 0)
        config = EGL_NO_CONFIG_KHR;

    const EGLint contextAttributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 3,
                                        EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                        EGL_NONE};
    s.context = eglCreateContext(s.display, config, EGL_NO_CONTEXT, contextAttributes);
    if (s.context == EGL_NO_CONTEXT)
        return Fail(s, "eglCreateContext for OpenGL 3.3 core failed");
    if (!eglMakeCurrent(s.display, EGL_NO_SURFACE, EGL_NO_SURFACE, s.context))
        return Fail(s, "eglMakeCurrent without surface failed");
    if (!gladLoadGL(LoadProc))
        return Fail(s, "gladLoadGL failed");
    s.ok = true;
    return true;
}

} // namespace

bool MakeGLContextCurrent(std::string* error)
{
    ContextState& s = State();
    if (!s.tried) {
        s.tried = true;
        Create(s);
    } else if (s.ok) {
        eglMakeCurrent(s.display, EGL_NO_SURFACE, EGL_NO_SURFACE, s.context);
    }
    if (error)
        *error = s.error;
    return s.ok;
}

std::vector<unsigned char> ReadPixelsRGBA(int x, int y, int width, int height)
{
    std::vector<unsigned char> pixels(size_t(width) * size_t(height) * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

void GLTest::SetUp()
{
    std::string error;
    ASSERT_TRUE(MakeGLContextCurrent(&error)) << "No OpenGL 3.3 core context: " << error;
    while (glGetError() != GL_NO_ERROR) {
    }
}

void GLTest::TearDown()
{
    if (MakeGLContextCurrent()) {
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << "a test left a GL error behind";
    }
}

} // namespace vel::test
