#include "OpenGL/VertexBuffer.h"

#include <glad/gl.h>

namespace vel {

VertexBuffer::~VertexBuffer()
{
    if (buffer != 0)
        glDeleteBuffers(1, &buffer);
}

void VertexBuffer::write(void const* data, int bytes)
{
    if (buffer == 0)
        glGenBuffers(1, &buffer);
    if (!dirty)
        return;
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    if (bytes == size) {
        glBufferSubData(GL_ARRAY_BUFFER, 0, bytes, data);
    } else {
        size = bytes;
        glBufferData(GL_ARRAY_BUFFER, bytes, data, GL_DYNAMIC_DRAW);
    }
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    dirty = false;
}

} // namespace vel
