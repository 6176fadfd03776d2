// VertexBuffer: a GL array buffer written from the CPU when marked dirty. It binds nothing
// itself: the vertex array that uses it does (element buffers).
#pragma once

#include "OpenGL/GLAtom.h"

namespace vel {

class VertexBuffer : public GLAtom {
public:
    unsigned buffer = 0; // GL name, 0 until the first write
    int size = 0;        // bytes of the current storage
    bool dirty = true;   // the CPU side changed since the last write

    VertexBuffer() = default;
    VertexBuffer(VertexBuffer const&) = delete;
    VertexBuffer& operator=(VertexBuffer const&) = delete;
    ~VertexBuffer() override;

    bool compile() override { return true; }
    bool enable() override { return true; }
    void disable() override {}

    // Uploads `bytes` of `data` when dirty: in place when the size is unchanged, else anew.
    void write(void const* data, int bytes);
};

} // namespace vel
