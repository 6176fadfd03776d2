#include "OpenGL/GLPick.h"

#include "Core/Assert.h"
#include "OpenGL/GLLayer.h"

#include <glad/gl.h>

#include <algorithm>
#include <cstring>

namespace vel {

namespace {
// Where each read lands in a pixel's bytes.
constexpr int AT_STENCIL = 0;  // one byte
constexpr int AT_DEPTH = 4;    // float
constexpr int AT_IDS = 8;      // four ints
constexpr int AT_PARTS = 24;   // four ints: component, patch, face, unused
constexpr int AT_NORMAL = 40;  // four floats
} // namespace

GLPick::~GLPick()
{
    // Buffers need the context: whoever owns this releases them while it is current.
    VEL_ASSERT_MSG(buffers[0] == 0, "GLPick::release() before destruction, with the context current");
}

void GLPick::Read(GLLayer* layer, int x, int y, unsigned char* base)
{
    x = std::clamp(x, 0, std::max(0, layer->width - 1));
    y = std::clamp(y, 0, std::max(0, layer->height - 1));
    VEL_ASSERT(layer->enableRead());
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_NONE);
    glReadPixels(x, y, 1, 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, base + AT_STENCIL);
    glReadPixels(x, y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, base + AT_DEPTH);
    glReadBuffer(GLenum(layer->ObjectItemsElement->attachment));
    glReadPixels(x, y, 1, 1, GL_RGBA_INTEGER, GL_INT, base + AT_IDS);
    glReadBuffer(GLenum(layer->ComponentPatchFaces->attachment));
    glReadPixels(x, y, 1, 1, GL_RGBA_INTEGER, GL_INT, base + AT_PARTS);
    glReadBuffer(GLenum(layer->Normal->attachment));
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_FLOAT, base + AT_NORMAL);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    FBO::disable(fbRead);
}

TPickResult GLPick::Decode(unsigned char const* bytes)
{
    TPickResult r;
    int ids[4], parts[4];
    float normal[4];
    std::memcpy(ids, bytes + AT_IDS, sizeof ids);
    std::memcpy(parts, bytes + AT_PARTS, sizeof parts);
    std::memcpy(normal, bytes + AT_NORMAL, sizeof normal);
    std::memcpy(&r.depth, bytes + AT_DEPTH, sizeof r.depth);
    // No stencil: nothing was drawn there. Id 0 under stencil: a hint, not an object.
    r.hit = bytes[AT_STENCIL] != 0 && ids[0] != 0;
    if (bytes[AT_STENCIL] == 0)
        r.depth = 1.0f;
    if (!r.hit)
        return r;
    r.objectId = ids[0];
    r.item = ids[1];
    r.element = ids[2];
    r.spare = ids[3];
    r.component = parts[0];
    r.patch = parts[1];
    r.face = parts[2];
    r.viewNormal = {normal[0], normal[1], normal[2]};
    return r;
}

void GLPick::request(GLLayer* layer, int x, int y)
{
    if (buffers[0] == 0) {
        glGenBuffers(RING, buffers);
        for (unsigned b : buffers) {
            glBindBuffer(GL_PIXEL_PACK_BUFFER, b);
            glBufferData(GL_PIXEL_PACK_BUFFER, BYTES, nullptr, GL_STREAM_READ);
        }
    }
    newest = (newest + 1) % RING;
    if (fences[newest])
        glDeleteSync(static_cast<GLsync>(fences[newest]));
    glBindBuffer(GL_PIXEL_PACK_BUFFER, buffers[newest]);
    Read(layer, x, y, nullptr);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    fences[newest] = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    finished[newest] = false;
}

TPickResult GLPick::collect(int slot, bool block, bool& ready)
{
    ready = finished[slot];
    if (ready)
        return results[slot];
    GLsync fence = static_cast<GLsync>(fences[slot]);
    if (!fence)
        return TPickResult();
    GLenum const status = glClientWaitSync(fence, block ? GL_SYNC_FLUSH_COMMANDS_BIT : 0,
                                           block ? GLuint64(1000000000) : GLuint64(0));
    if (status == GL_TIMEOUT_EXPIRED || status == GL_WAIT_FAILED)
        return TPickResult();
    glBindBuffer(GL_PIXEL_PACK_BUFFER, buffers[slot]);
    auto const* bytes = static_cast<unsigned char const*>(glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, BYTES, GL_MAP_READ_BIT));
    if (bytes) {
        results[slot] = Decode(bytes);
        glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
        finished[slot] = ready = true;
    }
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    return results[slot];
}

TPickResult GLPick::wait()
{
    if (newest < 0)
        return TPickResult();
    bool ready = false;
    return collect(newest, true, ready);
}

bool GLPick::latest(TPickResult& out)
{
    if (newest < 0)
        return false;
    // Newest first: the first slot that is done is the freshest answer there is.
    for (int k = 0; k < RING; ++k) {
        int const slot = (newest - k + RING) % RING;
        bool ready = false;
        TPickResult r = collect(slot, false, ready);
        if (ready) {
            out = r;
            return true;
        }
    }
    return false;
}

void GLPick::release()
{
    for (void*& f : fences)
        if (f) {
            glDeleteSync(static_cast<GLsync>(f));
            f = nullptr;
        }
    if (buffers[0] != 0)
        glDeleteBuffers(RING, buffers);
    std::fill(std::begin(buffers), std::end(buffers), 0u);
    newest = -1;
}

} // namespace vel
