// GLVisual: the passes of a frame, from the G-buffer to the composited picture. GLView
// orchestrates them for the viewport; the tool box thumbnails use them too.
//
// Index (GLVisual.cpp)
// - construction and size
// - matrices
// - object passes
// - composites, styles 0 to 7
// - transparency
// - screen effects
#pragma once

#include "Math/Matrix4.h"
#include "OpenGL/GLComposit.h"

#include <bitset>
#include <deque>
#include <memory>
#include <vector>

namespace vel {

class Camera;
class FBOTexture;
class TextureCube;
class ToolList;

class GLVisual : public GLComposit {
public:
    // The opaque pictures mixRefract reads: the sharp one and this many blurred copies.
    static constexpr int OpaquesMax = 4;
    // Blur0 is this fraction of the window: rough glass needs no more.
    static constexpr int BlurDivisor = 2;
    // Flags of contentFlags: list n holds opaque (bit 2n) or transparent (bit 2n + 1) tools.
    static constexpr int LISTS = 2;

    float zNear = 10.0f;   // the depth range of the projection
    float zFar = 10000.0f;
    Shared<GLComposit> Transparent; // the transparent pass of styles 6 and 7, without mipmaps
    Shared<FBO> ShaderLayersFbo;    // the target of the shader layers (drawn by that subsystem)
    Shared<FBO> LayerColors;        // the colour targets of Layers without its depth (FBO::ColorsOf)
    std::bitset<2 * LISTS> contentFlags; // this frame's lists, by renderObjects
    int objectCalls = 0;            // renderObjects calls this frame; the first LISTS set the flags
    // The first blurred level of the opaque picture and of the bloom (colour target 0) and the
    // scratch target of its blur (1).
    Shared<FBO> Blur0;
    // The environment that style 7 lights with and its split-sum table; null: Rendering's.
    TextureCube* sky = nullptr;
    Texture2D* brdfLUT = nullptr;
    std::deque<Shared<FBOTexture>> minMaxChain; // the reduction targets of the depth range
    // The reflections before they are added: one target at half the size of Blur0.
    Shared<FBO> FXfbo;
    // The levels below Blur0, each half the size of the one above: target 0 the level, target 1
    // the scratch of its blur. Bloom and the blurred opaque levels take turns in them; each
    // fills them anew before it reads them.
    static constexpr int ChainLevels = OpaquesMax - 1;
    std::vector<Shared<FBO>> BlurChain;
    float focusDistance = 1000.0f; // eye distance in focus: the camera's distance to its centre
    static constexpr float SSR_ROUGHNESS = 0.2f; // of every surface, for styles without materials

    GLVisual(int width, int height);
    ~GLVisual() override;

    // ---- size
    // Every target follows: this, Layers, ShaderLayersFbo, Transparent and its layer; the
    // blur target by its fraction.
    bool resize(int width, int height) override;

    // ---- matrices
    // The Shader transforms of a view by `camera`, the projection moved by `offset` pixels
    // (the jitter of accumulation).
    void buildMatrices(Camera const& camera, Vector2<float> const& offset);
    // Half the width, half the height and the lens distance, in pixels (lens 0: orthographic).
    Vector3<float> whLens() const;

    // ---- object passes
    // Clears the G-buffer for the style: with materials (kind 0) for styles 6 and 7, else
    // without (kind 6). Clears this frame's content flags.
    void renderClear();
    // Draws `list` into the G-buffer. Styles 6 and 7: the opaque set into Layers, then, when
    // the list has transparent tools or `clear` is set, the transparent set into the
    // Transparent layer over the opaque depth. Other styles: one pass without materials.
    void renderObjects(ToolList& list, bool clear, bool third);
    // Whether a list of this frame had transparent tools.
    bool hasTransparent() const;
    // Normals from depth into the normalised normal target, for the fast setting.
    void calculateNormals(Matrix4<double> const& projectionInv);

    // ---- composites
    // Colour from the G-buffer by the style of Rendering, into the ping-pong pair.
    void composit(float time);
    void compositFlat();
    void compositDepth(bool autoRange);
    void compositIDs();
    void compositNormals();
    void compositShaded();
    void compositMatCap();
    // Styles 6 and 7 write into `target`'s pair from `layer`; `opaque` false leaves empty
    // pixels transparent (the transparent composite).
    void compositColor(GLComposit* target, bool opaque);
    void compositPBR(GLComposit* target, bool opaque, float time);

    // ---- transparency
    // The transparent composite over the opaque one, refracting the opaque picture from its
    // blurred levels. With no transparent content the picture stays as it is.
    void mixRefract();
    // Level n of the opaque picture: 0 the picture itself, 1 in Blur0, then down BlurChain.
    Texture2D* opaqueLevel(int n) const;
    // Fills the blurred levels from the current picture: each is the one before at half the
    // size, blurred once more, so that each level is about twice as blurred as the one above.
    void blurLevels();
    // Blurs Blur0's level in place, then fills each level of BlurChain from the one above.
    // Returns the levels, Blur0's first.
    std::vector<Texture2D*> blurDown();

    // ---- screen effects, each with the settings of Rendering, from current() into next()
    // Outlines of the objects marked for contours ("Contours " is their width). In place:
    // current() stays, no flip.
    void contour();
    // Whether a tool of the list is marked for contours: the frame spares the pass otherwise.
    static bool hasContours(ToolList const& list);
    // Fog over the range of drawn depths, towards the background colour.
    void fog();
    // Reflections traced in FXfbo, added with the SSR strength.
    void SSR();
    // What is above the bloom threshold, blurred down the chain from Blur0 and added.
    void bloom();
    void tonemap();
    void chromaticAberration();
    // Blur by distance from focusDistance, from the levels of blurLevels.
    void depthOfField();
    // The eye distances of the nearest and farthest drawn pixels; (zNear, zFar) when nothing
    // was drawn.
    Vector2<float> drawnRange();
    // The targets of minMaxChain, in order.
    std::deque<FBOTexture*> rangeChain() const;

protected:
    // The effects' targets at the size of Blur0 and below; the depth range's reduction chain.
    void resizeEffects();
    // Background colour of the composite shaders for the present style.
    Vector4<float> background() const;
};

} // namespace vel
