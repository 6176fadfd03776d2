// An OpenGL 3.3 core context without any window or display: EGL on Mesa's surfaceless
// platform. Rendering goes to framebuffers the tests make; there is no default framebuffer.
#pragma once

#include <glad/gl.h>

#include <gtest/gtest.h>

#include <vector>

namespace vel::test {

// The process-wide context; made current on first use. Returns false (with a reason in
// `error`) when the machine has no usable EGL, so GL tests can fail with a clear message.
bool MakeGLContextCurrent(std::string* error = nullptr);

// Reads back the RGBA8 pixels of a rectangle of the bound read framebuffer, bottom row first.
std::vector<unsigned char> ReadPixelsRGBA(int x, int y, int width, int height);

// Base fixture of every GL test: makes the context current and checks no GL error is left behind.
class GLTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace vel::test
