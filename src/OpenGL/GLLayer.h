// GLLayer: the G-buffer. Six colour targets, window sized, over the depth-stencil texture of
// the GLComposit that owns it; draw buffer n is the output of "Mesh/fMeshRender" below:
//
//   0 oObjectItemsElement   GL_RGBA32I   object id, item, element id, spare
//   1 oComponentPatchFaces  GL_RGB32I    component, patch, face
//   2 oNormal               GL_RGBA32F   view normal; render flags as integer bits in w
//   3 oRoughMetal           GL_RG16F     roughness, metalness
//   4 oColorAlpha           GL_RGBA16F   albedo, alpha
//   5 oLightThick           GL_RGBA16F   glow colour, thickness
//
// A seventh target holds the normals normalised (normalizeNormals), which the composites
// read. The flags in oNormal.w always carry bit 29 (FLAG_NON_EMPTY), so that a cleared texel
// means that nothing is there. Integer targets are nearest-filtered, the others linear; all
// clamp to the edge.
#pragma once

#include "OpenGL/FBO.h"
#include "OpenGL/TPickResult.h"
#include "Scene/Elements/TRenderState.h"

namespace vel {

class ToolList;

class GLLayer : public FBO {
public:
    static constexpr int TARGETS = 6; // the draw buffers of the mesh shaders
    static constexpr int KIND_PLAIN = 6; // the pass without materials: three targets

    Texture2D* ObjectItemsElement = nullptr;
    Texture2D* ComponentPatchFaces = nullptr;
    Texture2D* Normal = nullptr;
    Texture2D* RoughMetal = nullptr;
    Texture2D* ColorAlpha = nullptr;
    Texture2D* LightThick = nullptr;
    Texture2D* NormalNormalized = nullptr; // target of normalizeNormals

    // Over the depth-stencil of `owner`, at its size.
    explicit GLLayer(FBO* owner);

    // Enables the layer for drawing and routes draw buffers 0 to 2, and 3 to 5 too unless the
    // state's kind is the one without materials.
    void setDrawBuffers(TRenderState const& state);
    // Depth 1 and stencil 0; ids, normals and the material targets to 0; the colour target to
    // the background of the style. With `source`, its depth is copied in, so that transparent
    // surfaces are tested against the opaque ones.
    void renderClear(TRenderState const& state, GLLayer* source);
    // The list's set for the state (transparent for kind 1, else opaque), every covered pixel
    // marked with stencil 1. An empty set draws nothing and leaves depth and stencil off.
    void render(TRenderState const& state, bool clear, ToolList& list, GLLayer* source);
    // NormalNormalized from Normal: xyz of unit length, w kept.
    void normalizeNormals();
    // What lies under pixel (x, y), rows from the bottom: a miss where the stencil is 0 or
    // the object id is 0 (a hint). Reads a few bytes at once; GLPick does it asynchronously.
    TPickResult pick(int x, int y);
};

} // namespace vel
