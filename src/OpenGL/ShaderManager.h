// ShaderManager: the cache of every shader program, and the built-in catalogue.
//
// Shaders are not made by `new`: the factories below key the cache on the simplified source
// and the two define lists, so two requests that differ only by comments or white space
// share one program, while the same text with other defines makes another. Nothing compiles
// here: the manager can be filled before a GL context exists, and each program is built on
// its first enable() on the GL thread.
//
// The built-in members are named "Shader" + the file's name; their files live under
// ":/shaders/" (see Path). Each is described in the constructor, and recorded in `catalogue`.
#pragma once

#include "Memory/Shared.h"
#include "Memory/Singleton.h"
#include "OpenGL/Shader.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class ShaderManager : public Singleton<ShaderManager> {
    friend class Singleton<ShaderManager>;

public:
    std::unordered_map<std::string, Shared<Shader>> shaders; // cache key -> program
    std::vector<Shader*> catalogue;                          // the built-in members, in order

    // ---- built-in members
    Shader* ShaderCopy = nullptr;        // "Copy": the texture "Image" to the target
    Shader* ShaderCopyGreyMax = nullptr; // "Copy" with GREY_MAX: grey from the largest channel
    Shader* ShaderFillVec4 = nullptr;    // "FillVec4": the uniform "Color" everywhere
    Shader* ShaderXYZSphere = nullptr;   // "XYZSphere": the navigation sphere

    // ---- frame pipeline: composites, transparency, shadows, hints
    Shader* ShaderCompositFlat = nullptr;          // front faces in one colour, background elsewhere
    Shader* ShaderCompositFlatBack = nullptr;      // back faces in their colour
    Shader* ShaderCompositIDs = nullptr;           // a colour per object id
    Shader* ShaderCompositShaded = nullptr;        // clay lit from the camera, front faces
    Shader* ShaderCompositShadedBack = nullptr;    // the same, back faces
    Shader* ShaderCompositNormals = nullptr;       // view normals as colour
    Shader* ShaderCompositMatCap = nullptr;        // material capture, front faces
    Shader* ShaderCompositMatCapBackFace = nullptr; // BACKFACE: back faces
    Shader* ShaderCompositColor = nullptr;         // albedo, lit where FLAG_LIT
    Shader* ShaderCompositColorGlow = nullptr;     // GLOW: plus the light channel
    Shader* ShaderCompositPBR = nullptr;           // image-based light
    Shader* ShaderCompositPBRGlow = nullptr;       // GLOW: plus the light channel
    Shader* ShaderDepthMapOrthogonal = nullptr;    // depth as grey, orthographic camera
    Shader* ShaderDepthMapPerspective = nullptr;   // depth as grey, perspective camera
    Shader* ShaderObjectType = nullptr;            // tint by object type
    Shader* ShaderMixRefract = nullptr;            // transparent over opaque, refracted
    Shader* ShaderMixRefractChroma = nullptr;      // CHROMA: a lens shift per channel
    Shader* ShaderMixRefractGlow = nullptr;        // GLOW: transparent light added
    Shader* ShaderMixRefractGlowChroma = nullptr;  // both
    Shader* ShaderMixRefractTestOpaque = nullptr;  // the refracted background alone
    Shader* ShaderShadowComposit = nullptr;        // shadow of the light's depth cube
    Shader* ShaderSegment = nullptr;               // one line
    Shader* ShaderPoint = nullptr;                 // a square of pixels around a point
    Shader* ShaderDrawCircle = nullptr;            // "Curve/DrawCircle": a line loop
    Shader* ShaderDrawSegment = nullptr;           // "Curve/DrawSegment": instanced parallel lines
    // ---- curve elements: "Curve/vCurveRender" + "Curve/fCurveRender" (CurveVBO)
    Shader* ShaderCurveRenderPbr = nullptr; // RENDER_PBR: kinds 0 and 1
    Shader* ShaderCurveRender = nullptr;    // kind 6
    // ---- end of curve elements
    // ---- the filter family (GLFilters) and the environment cube (Environment)
    Shader* ShaderMirrorVertical = nullptr;
    Shader* ShaderFilterClamp = nullptr;
    Shader* ShaderFilterMul = nullptr;
    Shader* ShaderFilterMul2 = nullptr; // FilterMul with MUL2: the product of two textures
    Shader* ShaderFilterAdd = nullptr;
    Shader* ShaderFilterAddFactor = nullptr;
    Shader* ShaderFilterAdd2 = nullptr;
    Shader* ShaderFilterAdd3 = nullptr;
    Shader* ShaderFilterAdd4 = nullptr;
    Shader* ShaderFilterAdd5 = nullptr;
    Shader* ShaderFilterAddMipMaps = nullptr;
    Shader* ShaderFilterAdd2MipMaps = nullptr;
    Shader* ShaderFilterMix = nullptr;
    Shader* ShaderFilterMixDepth = nullptr;
    Shader* ShaderFilterThreshold = nullptr;
    Shader* ShaderFilterThresholdMul = nullptr;
    Shader* ShaderFilterMedian = nullptr;
    Shader* ShaderFilterBlur = nullptr;
    Shader* ShaderFilterBlurSimple = nullptr; // FilterBlur with SIMPLE: three taps
    Shader* ShaderFilterGaussianBlur = nullptr;
    Shader* ShaderNormalize = nullptr;
    Shader* ShaderNormals = nullptr;
    Shader* ShaderNoise = nullptr;
    Shader* ShaderFilterMinMax = nullptr;
    Shader* ShaderFilterMinMaxDepthOnly = nullptr;
    Shader* ShaderSkyBox = nullptr;       // the environment as the background
    Shader* ShaderCopySkyBox = nullptr;   // a cube resampled through a rotation (environment levels)
    Shader* ShaderFilterSkyBox = nullptr; // seven taps of a cube (environment levels)
    // ---- end of the filter family and environment block
    // ---- screen effects (GLFilters; the passes of GLComposit and GLVisual)
    Shader* ShaderTonemap = nullptr;             // "Tonemap": exposure and gamma, no curve
    Shader* ShaderTonemapReinhard = nullptr;     // TONEMAP REINHARD: x / (1 + x)
    Shader* ShaderTonemapUncharted2 = nullptr;   // TONEMAP UNCHARTED2: the filmic curve
    Shader* ShaderTonemapACES = nullptr;         // TONEMAP ACES: the fitted ACES curve
    Shader* ShaderFilterChroma = nullptr;        // "Filters/FilterChroma": lens shift per channel
    Shader* ShaderFogOrthogonal = nullptr;       // distance fog (either camera)
    Shader* ShaderSSAO = nullptr;                // ambient occlusion
    Shader* ShaderSSSS = nullptr;                // subsurface light
    Shader* ShaderSSR = nullptr;                 // reflections
    // ---- screen effects at reduced size: gathered small, applied at full size by depth
    Shader* ShaderSSAOGather = nullptr;          // "SSAO", GATHER: occlusion only
    Shader* ShaderSSAOApply = nullptr;           // "SSAO", APPLY: the picture darkened
    Shader* ShaderSSSSGather = nullptr;          // "SSSS", GATHER: gathered colour only
    Shader* ShaderSSSSApply = nullptr;           // "SSSS", APPLY: the colour added
    Shader* ShaderFogRange = nullptr;            // "FogOrthogonal", RANGE_TEXTURE: range from the GPU
    Shader* ShaderFogRangeOver = nullptr;        // the same, OVER: blended over the picture in place
    Shader* ShaderFilterDepthOfFieldOver = nullptr; // "Filters/FilterDepthOfField", OVER: in place
    // ---- end of the reduced-size block
    Shader* ShaderEdgeDetection = nullptr;       // edges of ids and normals
    Shader* ShaderSimpleEdgeDetection = nullptr; // edges of ids alone
    Shader* ShaderContour = nullptr;             // outlines of objects marked for contours
    Shader* ShaderContourWire = nullptr;         // the same for wireframe pictures
    // ---- tile summaries of the edge and contour passes: "EdgeTiles", then "EdgeTileMask"
    Shader* ShaderEdgeTiles = nullptr;           // ids and the box of the normals
    Shader* ShaderSimpleEdgeTiles = nullptr;     // IDS_ONLY: ids
    Shader* ShaderContourTiles = nullptr;        // CONTOURS: ids and the contour flag
    Shader* ShaderEdgeTileMask = nullptr;        // tiles where ids or normals may change
    Shader* ShaderSimpleEdgeTileMask = nullptr;  // IDS_ONLY: where ids may change
    Shader* ShaderContourTileMask = nullptr;     // CONTOURS: where an outline may be
    // ---- end of the tile summaries
    Shader* ShaderFilterDepthOfField = nullptr;  // "Filters/FilterDepthOfField"
    // ---- end of screen effects
    // ---- mesh programs: element buffers and their draws (MeshVBO picks them by render kind)
    // "Mesh/vMeshRender" + "Mesh/fMeshRender"; vertex / fragment defines in the comments.
    Shader* ShaderMeshRenderPbr = nullptr;     // none / RENDER_PBR: kinds 0 and 1
    Shader* ShaderMeshRenderMeshPbr = nullptr; // MESH_PBR / MESH_PBR RENDER_PBR: with vertex materials
    Shader* ShaderMeshRenderTex = nullptr;     // MESH_TEX / MESH_TEX RENDER_PBR: materials from a texture
    Shader* ShaderMeshRender = nullptr;        // none / none: kind 6
    Shader* ShaderMeshRenderFast = nullptr;    // RENDER_FAST / RENDER_FAST: kind 6 without normals
    // "Mesh/vMeshSnakeRender" + "Mesh/fMeshRender", the same five.
    Shader* ShaderMeshSnakeRenderPbr = nullptr;
    Shader* ShaderMeshSnakeRenderMeshPbr = nullptr;
    Shader* ShaderMeshSnakeRenderTex = nullptr;
    Shader* ShaderMeshSnakeRender = nullptr;
    Shader* ShaderMeshSnakeRenderFast = nullptr;
    Shader* ShaderMeshColor = nullptr;              // "Mesh/MeshColor": kind 7
    Shader* ShaderMeshRenderPaint = nullptr;        // "Mesh/MeshRenderPaint": kinds 3 and 4
    Shader* ShaderMeshDepthPeel = nullptr;          // "Mesh/MeshDepthPeel": kind 8
    Shader* ShaderMeshDepth = nullptr;              // "Mesh/MeshDepth": kind 9
    Shader* ShaderMeshDepthPeelComponent = nullptr; // "Mesh/MeshDepthPeelComponent": kind 10, bound by its caller
    // ---- viewport: selection feedback
    Shader* ShaderContourSelection = nullptr; // selected and hovered ids tinted, with contours
    // ---- end of viewport
    // ---- end of mesh programs

    // ---- clay: the sculpt and paint passes over the tables, normals, and drawing (Clay)
    Shader* ShaderClayFacesNormal = nullptr;
    Shader* ShaderClayVertsNormals = nullptr;
    Shader* ShaderClayDeform = nullptr;
    Shader* ShaderClaySmooth = nullptr;
    Shader* ShaderClayDeformVolume = nullptr;
    Shader* ShaderClayTwist = nullptr;
    Shader* ShaderClayPinch = nullptr;
    Shader* ShaderClayAddSub = nullptr;
    Shader* ShaderClayCrease = nullptr;
    Shader* ShaderClayAddSubDir = nullptr;
    Shader* ShaderClayAddSubStamp = nullptr;
    Shader* ShaderClayMaterial = nullptr;
    Shader* ShaderClaySmoothMaterial = nullptr;
    Shader* ShaderClaySelectPaint = nullptr;
    Shader* ShaderClaySelectGradient = nullptr;
    Shader* ShaderClayMove = nullptr;
    Shader* ShaderClayScale = nullptr;
    Shader* ShaderClayRotate = nullptr;
    Shader* ShaderClaySkew = nullptr;
    Shader* ShaderClayBend = nullptr;
    Shader* ShaderClayTaper = nullptr;
    Shader* ShaderClayPosition = nullptr;      // position + deformation into another copy
    Shader* ShaderClayPositionBlend = nullptr; // BLEND: the deformation alone, added in place
    Shader* ShaderClaySwirl[3] = {};           // X_AXIS, Y_AXIS, Z_AXIS
    // "Clay/vClayRender" + "Mesh/fMeshRender", the five of the mesh programs, and depth.
    Shader* ShaderClayRenderPbr = nullptr;
    Shader* ShaderClayRenderMeshPbr = nullptr;
    Shader* ShaderClayRenderTex = nullptr;
    Shader* ShaderClayRender = nullptr;
    Shader* ShaderClayRenderFast = nullptr;
    Shader* ShaderClayRenderDepth = nullptr; // DEPTH_ONLY / none
    // ---- end of clay

    // ---- factories; each returns a null Shared when the text comes out empty
    Shared<Shader> FromText(std::string const& text, std::string const& vert_defs = {},
                            std::string const& frag_defs = {});
    // One file holding both stages.
    Shared<Shader> FromFile(std::string const& filename, std::string const& vert_defs = {},
                            std::string const& frag_defs = {});
    // A vertex file and a fragment file, each with its own stage marker, joined.
    Shared<Shader> FromFiles(std::string const& vert_file, std::string const& frag_file,
                             std::string const& vert_defs = {}, std::string const& frag_defs = {});
    // A vertex file and a fragment text, joined by a "##FRAGMENT" line.
    Shared<Shader> FromVFileFText(std::string const& vert_file, std::string const& frag_text,
                                  std::string const& vert_defs = {}, std::string const& frag_defs = {});

    // ---- user shaders (shader layers, object shaders)
    // A program compiled outside the cache from its verbatim text: the cached program of the
    // same code when there is a compiled one, else `compiled`, now cached.
    Shared<Shader> Share(Shared<Shader> const& compiled);
    // ---- end of user shaders

    // The cache key of a source and its defines.
    static std::string Key(std::string const& simplified, std::string const& vert_defs,
                           std::string const& frag_defs);
    // ":/shaders/" + name + ".glsl".
    static std::string Path(std::string const& name);
    // The whole file, through QFile in text mode; "" when it can't be read.
    static std::string ReadFile(std::string const& path);
    // The same, false when the file can't be opened or holds more than FileSizeLimit bytes
    // (refused with a log message: a device or a huge file is never read whole).
    static bool ReadFile(std::string const& path, std::string& text);
    static constexpr long long FileSizeLimit = 4ll << 20;

    // Drops the built-in members and the cache, with their GL objects: call while the
    // context is current, before it goes.
    void clear();

private:
    ShaderManager();
    // Records a built-in member (null when its file is missing) and returns it.
    Shader* builtin(Shared<Shader> const& shader);
    void describeMeshPrograms();
    void describeClayPrograms();
};

} // namespace vel
