#include "Scene/Elements/Mesh/MeshVBO.h"

#include "Core/Assert.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/ShaderManager.h"

#include <glad/gl.h>

namespace vel {

namespace {

// The key's low byte of a kind; 0 for kinds without a mesh layout.
int LowByte(int kind)
{
    switch (kind) {
    case 0:
    case 1:
        return 1;
    case 3:
    case 4:
        return 2;
    case 6:
        return 3;
    case 7:
        return 4;
    case rtDEPTHPEEL:
        return 5;
    case rtDEPTH:
        return 6;
    case 10:
        return 7;
    default:
        return 0;
    }
}

bool GBufferKind(int kind)
{
    return kind == 0 || kind == 1 || kind == 6;
}

bool MaterialKind(int kind)
{
    return kind == 0 || kind == 1 || kind == 3 || kind == 4 || kind == 7;
}

} // namespace

bool MeshVBO::Fast(TRenderState const& state)
{
    return GBufferKind(state.kind) && Rendering::instance().fast;
}

int MeshVBO::render_state(TRenderState const& state, bool snake) const
{
    int key = snake ? KEY_SNAKE : 0;
    int low = LowByte(state.kind);
    if (low == 0)
        return key;
    if (Fast(state))
        key |= KEY_FAST;
    if (MaterialKind(state.kind) && hasPbr())
        key |= KEY_PBR;
    return key | low;
}

Shader* MeshVBO::renderShader(TRenderState const& state) const
{
    ShaderManager const& m = ShaderManager::instance();
    switch (state.kind) {
    case 0:
    case 1:
        return hasPbr() ? m.ShaderMeshRenderMeshPbr : m.ShaderMeshRenderPbr;
    case 3:
    case 4:
        return m.ShaderMeshRenderPaint;
    case 6:
        return Fast(state) ? m.ShaderMeshRenderFast : m.ShaderMeshRender;
    case 7:
        return m.ShaderMeshColor;
    case rtDEPTHPEEL:
        return m.ShaderMeshDepthPeel;
    case rtDEPTH:
        return m.ShaderMeshDepth;
    case 10:
        return nullptr;
    default:
        VEL_ASSERT(false && "no mesh shader");
        return nullptr;
    }
}

Shader* MeshVBO::renderSnakeShader(TRenderState const& state) const
{
    ShaderManager const& m = ShaderManager::instance();
    switch (state.kind) {
    case 0:
    case 1:
        return hasPbr() ? m.ShaderMeshSnakeRenderMeshPbr : m.ShaderMeshSnakeRenderPbr;
    case 6:
        return Fast(state) ? m.ShaderMeshSnakeRenderFast : m.ShaderMeshSnakeRender;
    default:
        // Depth, paint and colour passes of a chain draw the links unbent.
        return renderShader(state);
    }
}

void MeshVBO::describeAttributes(TRenderState const& state, bool)
{
    bool fast = Fast(state);
    bool pbr = hasPbr();
    // Each attribute reads its own buffer from the start: stride 0, offset 0.
    auto floats = [](int location, VertexBuffer* vbo, int size, unsigned type, bool normalized) {
        glBindBuffer(GL_ARRAY_BUFFER, vbo->buffer);
        glEnableVertexAttribArray(unsigned(location));
        glVertexAttribPointer(unsigned(location), size, type, normalized ? GL_TRUE : GL_FALSE, 0, nullptr);
    };
    auto integers = [](int location, VertexBuffer* vbo, int size, unsigned type) {
        glBindBuffer(GL_ARRAY_BUFFER, vbo->buffer);
        glEnableVertexAttribArray(unsigned(location));
        glVertexAttribIPointer(unsigned(location), size, type, 0, nullptr);
    };
    floats(0, vbo_positions(), 3, GL_FLOAT, false);
    switch (state.kind) {
    case 0:
    case 1:
        integers(1, vbo_ids(), 3, GL_INT);
        if (pbr)
            integers(2, vbo_pbrs(), 4, GL_UNSIGNED_INT);
        if (!fast)
            floats(pbr ? 3 : 2, vbo_normals(), 4, GL_INT_2_10_10_10_REV, true);
        break;
    case 3:
    case 4:
    case 7:
        if (pbr)
            integers(1, vbo_pbrs(), 4, GL_UNSIGNED_INT);
        break;
    case 6:
        integers(1, vbo_ids(), 3, GL_INT);
        if (!fast)
            floats(2, vbo_normals(), 4, GL_INT_2_10_10_10_REV, true);
        break;
    case 10:
        integers(1, vbo_ids(), 3, GL_INT);
        break;
    default:
        break;
    }
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

} // namespace vel
