// MeshVBO: the vertex buffers of polygonal elements and the mesh programs.
//
// Buffers, in this order, each a triangle soup of points_count() vertices:
//   positions  3 x float                    (Position)
//   ids        3 x int: component, patch, face of the vertex's face (ComponentPatchFace)
//   normals    GL_INT_2_10_10_10_REV, normalised: the corner normal as the mesh packs it
//   materials  4 x uint: the corner's Pbr words, with vertex materials only (Material)
//
// Attribute locations by render kind (F: not in fast mode, P: with vertex materials):
//   0, 1     Position, ComponentPatchFace, Material (P) else Normal (F), Normal (P and F)
//   3, 4, 7  Position, Material (P)
//   6        Position, ComponentPatchFace, Normal (F)
//   8, 9     Position
//   10       Position, ComponentPatchFace
#pragma once

#include "Scene/Elements/ElementVBO.h"

namespace vel {

class MeshVBO : public ElementVBO {
public:
    static constexpr int VBO_POSITIONS = 0;
    static constexpr int VBO_IDS = 1;
    static constexpr int VBO_NORMALS = 2;
    static constexpr int VBO_PBRS = 3;

    MeshVBO() { reset_vbos(); }
    MeshVBO(MeshVBO const& other)
        : ElementVBO(other)
    {
        reset_vbos();
    }
    MeshVBO& operator=(MeshVBO const& other) = default;

    int vbos_count() const override { return 4; }
    VertexBuffer* vbo_positions() const { return vbos[VBO_POSITIONS].get(); }
    VertexBuffer* vbo_ids() const { return vbos[VBO_IDS].get(); }
    VertexBuffer* vbo_normals() const { return vbos[VBO_NORMALS].get(); }
    VertexBuffer* vbo_pbrs() const { return vbos[VBO_PBRS].get(); }

    // The key of the layout: snake bit 10, fast bit 9 (kinds 0, 1, 6), vertex materials
    // bit 8 (kinds 0, 1, 3, 4, 7), and the kind's own low byte; the snake bit alone for
    // kinds without a mesh layout.
    int render_state(TRenderState const& state, bool snake) const override;
    // The program of a kind; kind 10 has none (its caller binds one), other kinds stop.
    Shader* renderShader(TRenderState const& state) const override;
    Shader* renderSnakeShader(TRenderState const& state) const override;

    // Whether a state draws without normals: the fast setting, for the G-buffer kinds.
    static bool Fast(TRenderState const& state);

protected:
    void describeAttributes(TRenderState const& state, bool snake) override;
};

} // namespace vel
