// Fixture and helpers of the GL resource tests: a context with the resources registered, a
// bound vertex array (full-screen passes draw without vertex buffers), clean binding mirrors,
// and counters that wrap glad's function pointers to count the GL calls a step makes.
#pragma once

#include "Support/GLTestContext.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vel::test {

class GLResourceTest : public GLTest {
protected:
    void SetUp() override;
    void TearDown() override;

    // The messages logmsg received since SetUp.
    static std::vector<std::string>& Messages();
    // True when some message received so far contains `text`.
    static bool Logged(std::string const& text);

private:
    unsigned vertexArray = 0;
};

// Counts calls of a few GL entry points while alive, by swapping glad's pointers.
class GLCallCounter {
public:
    GLCallCounter();
    ~GLCallCounter();
    GLCallCounter(GLCallCounter const&) = delete;
    GLCallCounter& operator=(GLCallCounter const&) = delete;

    int getUniformLocation() const;
    int useProgram() const;
    int bindFramebuffer() const;
    int enableDisable() const; // glEnable and glDisable together
    int bufferData() const;
    int bufferSubData() const;
    // GL objects and storage made: glGenTextures, glGenFramebuffers and glTexImage2D together.
    int created() const;
    // The programs glUseProgram switched to, in order.
    std::vector<unsigned> const& programs() const;
    void reset();
};

// Runs the enabled transform-feedback program over `count` points (rasterizer off) and reads
// back one buffer per output, holding `components[i]` 4-byte words per point.
std::vector<std::vector<uint32_t>> CaptureFeedback(std::vector<int> const& components, int count);
// The float whose bits a captured word holds.
float AsFloat(uint32_t word);

// RGBA8 pixels of a colour attachment of the bound read framebuffer, bottom row first.
std::vector<unsigned char> ReadColor(int attachment, int width, int height);
// RGBA float pixels likewise.
std::vector<float> ReadColorFloat(int attachment, int width, int height);

} // namespace vel::test
