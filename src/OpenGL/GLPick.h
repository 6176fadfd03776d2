// GLPick: reads what lies under one pixel of a G-buffer: stencil, depth, ids, component
// ids and normal, a few bytes in all.
//
// The reads go into pixel buffer objects, a ring of RING, so that glReadPixels returns at
// once and the copy runs while the GPU goes on: `request` issues the reads of one pixel,
// `wait` takes the newest result (waiting for it where the GPU is behind), `latest` takes
// the newest result that is already there without waiting, or answers false. GLLayer::pick
// reads the same bytes straight into memory, for the one-off picks that need no buffer.
#pragma once

#include "OpenGL/TPickResult.h"

namespace vel {

class GLLayer;

class GLPick {
public:
    static constexpr int RING = 3;
    static constexpr int BYTES = 64; // of one pixel's reads, laid out as Decode reads them

    GLPick() = default;
    ~GLPick();
    GLPick(GLPick const&) = delete;
    GLPick& operator=(GLPick const&) = delete;

    // Issues the reads of pixel (x, y) of `layer`, in GL's coordinates (rows from the
    // bottom), clamped to the layer. Leaves no framebuffer bound for reading.
    void request(GLLayer* layer, int x, int y);
    // The newest request's result; a miss when nothing was requested.
    TPickResult wait();
    // The newest result that the GPU has finished, without waiting; false when none is.
    bool latest(TPickResult& out);
    // Deletes the buffers (the context must be current); remade by the next request.
    void release();

    // The reads of one pixel into `base`: client memory, or an offset into the bound pixel
    // pack buffer.
    static void Read(GLLayer* layer, int x, int y, unsigned char* base);
    static TPickResult Decode(unsigned char const* bytes);

private:
    unsigned buffers[RING] = {};
    void* fences[RING] = {}; // GLsync, by its pointer type kept out of this header
    int newest = -1;         // the slot of the last request
    bool finished[RING] = {};
    TPickResult results[RING];

    TPickResult collect(int slot, bool block, bool& ready);
};

} // namespace vel
