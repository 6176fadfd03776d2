// Rendering: the scene-wide render settings, a singleton that travels in scene files.
//
// Listing and sorting the scene read the first group; the frame pipeline reads the second.
#pragma once

#include "Math/Vector3.h"
#include "Math/Vector4.h"
#include "Memory/Shared.h"
#include "Memory/Singleton.h"
#include "Scene/Elements/TRenderState.h"

#include <deque>
#include <iosfwd>
#include <string>

namespace vel {

class Environment;
class ShaderLayer;
class Texture;

class Rendering : public Singleton<Rendering> {
public:
    // Composite styles: 0 flat, 1 depth, 2 ids, 3 normals, 4 shaded, 5 matcap, 6 color, 7 pbr.
    static constexpr int STYLE_MATCAP = 5;
    static constexpr int STYLE_COLOR = 6;
    static constexpr int STYLE_PBR = 7;

    int style = STYLE_PBR;
    bool fast = false;              // write no normals; the frame derives them from depth
    bool twoSided = false;          // no face culling
    bool plain = false;             // flat-material mode
    bool showBoundingBoxes = false; // each drawn item's oriented box follows the list's draw
    // What the scene's list draws at all (the three settings of ToolList::sort).
    bool showCurves = true;
    bool showTransparent = true;
    bool showRigidBodies = true;
    // The frame loop's clocks.
    float fps = 0.0f;       // frames per second over the last ten frames
    double idleTime = 0.0;  // seconds since the viewport last changed

    // ---- the frame pipeline (labels of the settings panel in quotes)
    bool DepthTest = true;       // "Depth Test": depth test during the G-buffer pass
    bool wireframe = false;      // lines instead of faces; also switches SSAO, SSSS, SSR and fog off
    bool EdgeDetect = false;     // "Edge Detect"
    float contours = 1.0f;       // "Contours "
    bool ScreenSpaceAmbientOcclusion = false; // "SSAO     "
    float ssaoStrength = 1.0f;
    bool ssss = false;           // "SSSS     "
    float ssssStrength = 1.0f;
    bool ScreenSpaceReflection = false; // "SSR      "
    float ssrStrength = 0.5f;
    int ssrRays = 8;             // "SSR Rays "
    bool fog = false;            // "Fog      "
    float fogStrength = 0.5f;
    float shadow = 0.0f;         // "Shadow   ": shadow strength, 0 for no shadow pass
    bool light = false;          // the light is on: shadows fall from LightSource
    Vector3<float> LightSource{0.0f, 1000.0f, 0.0f}; // "Light    ": world position
    float RotateLight = 0.0f;    // "Rotate   ": radians per second about the vertical
    float noise = 0.0f;          // "Noise    ": film noise strength
    float jitter = 1.0f;         // "Jitter   ": sub-pixel jitter, in pixels, while accumulating
    float dofSize = 0.0f;        // "DOF Size "
    float glow = 1.0f;           // "Glow     "
    float bloom = 0.0f;          // "Bloom    "
    float bloomThreshold = 1.0f; // what is brighter than this blooms
    float exposure = 1.0f;       // "Exposure "
    // "Tonemap  ": 0 no tonemap pass, 1 gamma and exposure, 2 also the curve that
    // c / (1.001 - c) undoes, 3 the UNCHARTED2 curve, 4 the ACES curve.
    int tonemap = 0;
    float gamma = 2.2f;          // "Gamma    "
    bool LensChromaticAberration = false; // "Lens Chr."
    float lensChroma = 0.01f;    // its shift, as a fraction of the distance from the centre
    float chroma = 0.0f;         // "A Chroma ": per-channel shift inside transparent surfaces
    float FieldOfView = 45.0f;   // "FOV      ": vertical, in degrees
    int cameraType = 0;          // "Type     ": 0 perspective, 1 orthographic
    bool LimitFramesPerSecond = false; // "Limit FPS"
    bool Turntable = false;      // "Turntable  "
    bool HalfsizeViewport = false; // "Halfsize   ": every target at half the window size
    bool ObjectShadersActive = true;
    bool ShaderLayersActive = true;
    bool autoDepthRange = true;  // the depth style spans the drawn depths
    bool objectTypes = false;    // tint curves, bones and rigid bodies by type
    bool showEnvironment = false; // the sky box fills the background of styles 6 and 7
    bool transparentBackground = false;
    Vector4<float> background{0.28f, 0.28f, 0.28f, 1.0f}; // as the user chose it

    // The clear colour of the G-buffer's colour target, so that the background comes out of
    // the post chain as `background`: black for the style depth, (0.5, 0.5, 1) for normals;
    // with styles 6 and 7 the inverse of the tonemap pass's gamma, curve and exposure (none
    // while that pass is off). Alpha 0 when the
    // background is transparent.
    Vector4<float> clearColor() const;
    // The tone curve of a "Tonemap  " value at x (the picture times the exposure), before the
    // gamma; 0 and 1 are the identity. And its inverse on 0..1.
    static float toneCurve(int tonemap, float x);
    static float inverseToneCurve(int tonemap, float y);

    // ---- image-based light (textures from TextureManager; forward-declared, so that the scene
    // model including this header sees no GL)
    static char const* const DEFAULT_ENVIRONMENT; // ":/PBR/Newport_Loft_Ref.hdr"
    static char const* const DEFAULT_BRDF;        // ":/PBR/ibl_brdf_lut.png"
    static char const* const DEFAULT_MATCAP;      // ":/Materials/MatCaps/RedClay.png"
    Shared<Texture> currentEnvironment; // an Environment; null until openResources
    Shared<Texture> BRDF;               // split-sum table: NV on x, roughness on y; scale r, bias g
    Shared<Texture> matcap;             // the default matcap
    // The current environment cube, null before openResources.
    Environment* environment() const;
    // The environment of an ".hdr" file through TextureManager. A file that can't be read (or
    // isn't an HDR panorama) is reported and leaves the current one in place: false.
    bool setEnvironment(std::string const& path);
    // Takes the default environment (unless one is set), table and matcap. No GL call: they
    // compile on first use, or when GLWidget::initializeGL compiles them.
    void openResources();
    // Lets them go (call while the context is current).
    void closeResources();
    // ---- end of image-based light

    // ---- shader layers (ShaderLayer): the four run groups in order, each with its switch.
    // The common includes ("?Common n") are ShaderIncludeManager::common.
    std::deque<Shared<ShaderLayer>> ShaderLayers[4];
    bool ShaderLayerGroupActive[4] = {true, true, true, true};
    // Adds `layer` at the end of `group` (0 to 3) and returns it.
    Shared<ShaderLayer> const& addShaderLayer(int group, Shared<ShaderLayer> const& layer);
    // The group and place of the layer whose own buffer's front texture is `texture`.
    bool FindCustomShaderLayer(Texture const* texture, char& group, int& index) const;
    bool FindShaderLayer(ShaderLayer const* layer, char& group, int& index) const;
    // The scene file's shader layers block and common includes block, both ways. A block
    // that can't be read is reported and changes nothing; `replace` false appends.
    void save_shader_layers(std::ostream& out) const;
    void save_include_common(std::ostream& out) const;
    bool load_shader_layers_from_buffer(std::istream* buffer, bool replace);
    bool load_include_common_from_buffer(std::istream* buffer, bool replace);
    // ---- end of shader layers

    Rendering();
    ~Rendering() override;

    // Styles 6 and 7 draw materials, and only they have a transparent pass.
    static bool hasMaterials(int style);
    // A request of the given kind with the present culling and material settings.
    TRenderState renderState(int kind) const;
};

} // namespace vel
