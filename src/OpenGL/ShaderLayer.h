// ShaderLayer: a full-screen fragment shader of the user's, run as a pass of every frame.
//
// Index (ShaderLayer.cpp)
// - names and class-wide state
// - the text of a layer: IOText, FragText, FullText, AdaptFromShadertoy
// - compile and use
// - running the groups in the frame
// - scene storage (DataWrite, DataRead)
// The layer XML file is in ShaderLayerFile.cpp.
//
// Layers live in Rendering's four groups, run at four points of the frame: RunPreOpaque
// after the G-buffer is cleared, RunPostOpaque after the objects are drawn (both drawing into
// the G-buffer), RunPostComposit after the composite and RunFinal after the screen effects
// (both filtering the picture, iImage). A layer with a buffer of its own ("custom") draws into
// its FBODoubleBuffer instead, and other layers, or itself in the next frame, read its front
// texture through a sampler.
//
// Failure rules: a layer whose code doesn't compile keeps running its last good program; one
// that never compiled is skipped. The logs, mapped to the user's lines, are in `errors` and
// ShaderCode::error_messages.
#pragma once

#include "Math/Matrix3.h"
#include "Math/Matrix4.h"
#include "Math/Vector2.h"
#include "Math/Vector4.h"
#include "OpenGL/ShaderCode.h"

#include <array>
#include <istream>
#include <ostream>
#include <string>

namespace vel {

class FBODoubleBuffer;
class GLVisual;
class Shader;
class Texture2D;

// What the frame hands every layer (the uniforms of the same names).
struct ShaderLayerUniforms {
    float time = 0;                    // iTime
    int frame = 0;                     // iFrame
    std::array<Vector4<float>, 3> mouse{}; // iMouse: viewport pointer, pointer read, interface pointer
    Vector2<float> fovLens;            // iFOVLens: vertical field of view in degrees, lens
    Matrix4<float> viewToScreen, screenToView, worldToScreen, screenToWorld;
    Matrix3<float> worldToScreenRotation, screenToWorldRotation;

    // The frame's transforms (Shader's), the pointer's rows and the clocks. `height` is the
    // target's, for turning pointer rows upside up.
    static ShaderLayerUniforms Frame(double time, long frame, int height);
};

class ShaderLayer : public ShaderCode {
public:
    enum { RunPreOpaque = 0, RunPostOpaque = 1, RunPostComposit = 2, RunFinal = 3, GROUPS = 4 };
    enum { StencilAll = 0, StencilBackground, StencilContent, StencilLayer, StencilScene };
    static constexpr int MAX_BUFFER_SIZE = 8192; // pixels on a side of a buffer of its own

    static bool ActiveAll; // "ShaderLayersActive": off, no group runs and no buffer is touched
    static int ViewWidth;  // the view's targets, for sizes in percent
    static int ViewHeight;
    static char const* const Groups[GROUPS]; // the group keys, "RunPreOpaque" ...
    static char const* const Types[GROUPS];  // their help texts
    static Shared<ShaderLayer> Loaded;       // what the last layer file held
    static std::vector<std::string> LoadedfIncludes;

    int group = RunFinal;        // the group it runs in, set when it is added to one
    bool depthWrite = false;     // "DepthWrite": groups 0 and 1 test and write depth
    int stencil = StencilAll;    // 0 to 4, see the stencil names
    std::array<bool, SAMPLERS> mipmapsFromInput{}; // "Use MipMaps From Input", per sampler
    bool generateMipMaps = false; // "Generate MipMaps" of its own output
    Shared<FBODoubleBuffer> fbo; // its own buffer, made at the first use as one
    int style = -1;              // the render style it was compiled for last
    float width = 100;           // buffer size, percent of the view or pixels
    float height = 100;
    bool percent = true;
    bool custom = false;         // draws into its own buffer, not into the frame
    bool clearNextFrame = true;  // the next run clears the buffer and draws nothing

    explicit ShaderLayer(std::string const& text = {});
    ~ShaderLayer() override;

    // ---- names
    // group label + ".Layer." + index
    static std::string name(int group, int index);
    // The key of this layer in ShaderCode::error_messages.
    std::string key() const;

    // ---- editing
    void setText(std::string const& code);
    void setCustom(int group, bool own);
    void set_sampler(int slot, Shared<Texture> const& texture) override;
    // Code and settings of `other`; the buffer and the programs stay this layer's.
    void copyFrom(Shared<ShaderLayer> const& other);
    void copyBackToFront();
    // The text of `shadertoy` made to run here: iChannelN as iTexN, iMouse as its first row,
    // and a main() that calls mainImage.
    static std::string AdaptFromShadertoy(std::string const& shadertoy);

    // ---- the text of the program
    // The resource path of the IO header of a group, drawing to the frame or to its own buffer.
    static std::string IOHeader(int group, bool own);
    // "#version", RENDER_PBR by the style, the IO header of the group and buffer kind, the
    // layer's includes and samplers.
    std::string IOText(int style, bool own) const;
    // IOText and the user's text as a listing, includes expanded when `expand` is set.
    CodeListing FragText(int style, bool expand) const;
    // The fixed full-screen vertex stage in front of FragText: one source of Shader's format.
    CodeListing FullText(int style, bool expand) const;

    // ---- programs
    // Compiles for `style`; false leaves the earlier program of the style in place.
    bool compile(int style);
    // Before each run: sizes the own buffer, compiles when asked for; the program, or 0 when
    // the layer is off, never compiled, or all layers are off.
    unsigned use(int style);
    // The size its own buffer takes now.
    Vector2<int> bufferSize() const;

    // ---- the frame
    // Groups 0 and 1 into the G-buffer of `view`; groups 2 and 3 over its picture.
    static void RenderPreCompositShaderLayers(GLVisual& view, ShaderLayerUniforms const& uniforms, int group);
    static void RenderPostCompositShaderLayers(GLVisual& view, ShaderLayerUniforms const& uniforms, int group);
    // Sets clearNextFrame on every layer with a buffer of its own: simulations restart.
    static void ResetAllCustomShaderLayers();

    // ---- the layer file (XML, ShaderLayerFile.cpp: OpenShaderLayer, SaveShaderLayer)
    // The layer an XML text holds, or null with a log message naming `where` and the fault:
    // a text that doesn't parse (a truncated file), no root, an element not of the format, a
    // value out of range, an #include whose text can't be found, a text too large. Nothing
    // else is touched. Makes no GL call. A texture reference that can't be read leaves its
    // slot empty.
    static Shared<ShaderLayer> FromXML(std::string const& text, std::string const& where);
    // The file at `path` (at most ShaderManager::FileSizeLimit bytes) through FromXML.
    static Shared<ShaderLayer> Open(std::string const& path);
    std::string ToXML() const;
    bool Save(std::string const& path) const;

    // ---- scene storage
    // int format; string code; bool active, auto-compile, depth write; int stencil; the eight
    // mipmap flags and "Generate MipMaps"; int count and include names; for each of the eight
    // samplers a byte kind (0 none, 1 texture path, 2 another layer's output, then a byte
    // group and an int index); bool own buffer, bool percent, float width, float height.
    // Strings are an int length and the bytes.
    void DataWrite(std::ostream& out) const;
    // False on data that cannot be a layer; the layer is then unchanged. Samplers that name a
    // layer's output are left in `layerRefs` (group, index per slot, -1 none) for the caller to
    // resolve once all layers are read.
    bool DataRead(std::istream& in, std::array<std::pair<int, int>, SAMPLERS>& layerRefs);

private:
    static void RunGroup(GLVisual& view, ShaderLayerUniforms const& uniforms, int group);
    void run(GLVisual& view, ShaderLayerUniforms const& uniforms, Shader* shader);
};

} // namespace vel
