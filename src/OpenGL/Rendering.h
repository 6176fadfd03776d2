// Rendering: the scene-wide render settings, a singleton that travels in scene files.
//
// So far only what listing and sorting the scene read. The frame pipeline adds the rest
// (depth test, wireframe, the screen effects, light, camera) as its passes land.
#pragma once

#include "Memory/Shared.h"
#include "Memory/Singleton.h"
#include "Scene/Elements/TRenderState.h"

#include <string>

namespace vel {

class Environment;
class Texture;

class Rendering : public Singleton<Rendering> {
public:
    // Composite styles: 0 flat, 1 depth, 2 ids, 3 normals, 4 shaded, 5 matcap, 6 color, 7 pbr.
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

    Rendering();
    ~Rendering() override;

    // Styles 6 and 7 draw materials, and only they have a transparent pass.
    static bool hasMaterials(int style);
    // A request of the given kind with the present culling and material settings.
    TRenderState renderState(int kind) const;
};

} // namespace vel
