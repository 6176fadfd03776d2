// CurveVBO: the GPU side of curves: one position buffer drawn as lines (two points per edge)
// followed by the handles (one point per vertex), and the bones texture of snakes.
//
// Bones: four RGB32F texels per vertex frame, one column of the 4x3 each ("BonesMatrices"),
// laid out row by row in a texture of even width floor(sqrt(n)) rounded up. The texture is
// made on the render thread, and only when the bones changed since the last upload.
#pragma once

#include "Scene/Elements/ElementVBO.h"

#include <array>
#include <deque>
#include <memory>
#include <vector>

namespace vel {

class Texture2D;

// One bone: the 3x3 of a vertex frame in storage order, then the vertex position.
using CurveBone = std::array<float, 12>;

class CurveVBO : public ElementVBO {
public:
    int lineCount = 0;   // points of the line part of the buffer (two per edge)
    int handleCount = 0; // points after it, one per vertex
    bool bonesTextureDirty = true; // the bones changed since the texture was filled
    std::unique_ptr<Texture2D> bonesTexture; // null until the first snake draw

    CurveVBO();
    CurveVBO(CurveVBO const& other);
    CurveVBO& operator=(CurveVBO const& other);
    ~CurveVBO() override;

    int vbos_count() const override { return 1; }
    int points_count() const override { return lineCount + handleCount; }
    bool buildGPUData() override;
    void deleteGPUData() override;
    int render_state(TRenderState const& state, bool snake) const override;
    Shader* renderShader(TRenderState const& state) const override;
    void render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                int instance, Material const& material, int flags, float time) override;

    // Uploads `bones` into the texture when they changed; false when there are none.
    bool uploadBones(std::deque<CurveBone> const& bones);
    // Texel size of the bones texture for `frames` bones: x width, y height.
    static void BonesTextureSize(int frames, int& width, int& height);

protected:
    void describeAttributes(TRenderState const& state, bool snake) override;
    // The flat positions of the buffer; sets lineCount and handleCount.
    virtual void fillGPUPositions(std::vector<float>& out) = 0;
};

} // namespace vel
