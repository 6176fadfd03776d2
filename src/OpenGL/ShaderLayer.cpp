#include "OpenGL/ShaderLayer.h"

#include "Core/Assert.h"
#include "Core/StreamValues.h"
#include "OpenGL/Environment.h"
#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLLayer.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/GLVisual.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "OpenGL/TextureManager.h"

#include <glad/gl.h>

#include <algorithm>
#include <cmath>
#include <deque>

namespace vel {

// ------------------------------------------------------------------------------------------
// Names and class-wide state
// ------------------------------------------------------------------------------------------

bool ShaderLayer::ActiveAll = true;
int ShaderLayer::ViewWidth = 1;
int ShaderLayer::ViewHeight = 1;
char const* const ShaderLayer::Groups[GROUPS] = {"RunPreOpaque", "RunPostOpaque", "RunPostComposit", "RunFinal"};
char const* const ShaderLayer::Types[GROUPS] = {
    "Executed before rendering opaque objects to screen buffers",
    "Executed after rendering opaque objects to screen buffers",
    "Executed after compositing screen buffers",
    "Executed after post-processing effects",
};
Shared<ShaderLayer> ShaderLayer::Loaded;
std::vector<std::string> ShaderLayer::LoadedfIncludes;

ShaderLayerUniforms ShaderLayerUniforms::Frame(double time, long frame, int height)
{
    ShaderLayerUniforms u;
    u.time = float(time);
    u.frame = int(frame);
    Mouse const* rows[3] = {&vel::mouse, &mouseRead, &mouseui};
    for (int i = 0; i < 3; ++i) {
        Mouse const& m = *rows[i];
        float buttons = float((m.left ? 1 : 0) | (m.middle ? 2 : 0) | (m.right ? 4 : 0));
        u.mouse[size_t(i)] = Vector4<float>(m.x, float(height) - m.y, buttons, m.wheel);
    }
    u.fovLens = Vector2<float>(Rendering::instance().FieldOfView, Shader::Lens);
    u.viewToScreen = Matrix4<float>(Shader::ProjectionMatrix);
    u.screenToView = Matrix4<float>(Shader::ProjectionMatrixInv);
    u.worldToScreen = Matrix4<float>(Shader::ProjectionModelViewMatrix);
    u.screenToWorld = Matrix4<float>(Shader::ProjectionModelViewMatrixInv);
    u.worldToScreenRotation = Matrix3<float>(Shader::NormalMatrix);
    u.screenToWorldRotation = Matrix3<float>(Shader::NormalMatrixInv);
    return u;
}

ShaderLayer::ShaderLayer(std::string const& code)
{
    text = code;
}

ShaderLayer::~ShaderLayer() = default;

std::string ShaderLayer::name(int group, int index)
{
    VEL_ASSERT(0 <= group && group < GROUPS);
    return std::string(Groups[group]) + ".Layer." + std::to_string(index);
}

std::string ShaderLayer::key() const
{
    char g = 0;
    int index = -1;
    if (Rendering::instance().FindShaderLayer(this, g, index))
        return name(g, index);
    return "ShaderLayer";
}

// ------------------------------------------------------------------------------------------
// Editing
// ------------------------------------------------------------------------------------------

void ShaderLayer::setText(std::string const& code)
{
    text = code;
    dirty = true;
}

void ShaderLayer::setCustom(int g, bool own)
{
    VEL_ASSERT(0 <= g && g < GROUPS);
    // The IO header changes with both: the program must be made anew.
    if (g != group || own != custom)
        dirty = true;
    group = g;
    custom = own;
    if (own)
        clearNextFrame = true;
}

void ShaderLayer::set_sampler(int slot, Shared<Texture> const& texture)
{
    ShaderCode::set_sampler(slot, texture);
}

void ShaderLayer::copyFrom(Shared<ShaderLayer> const& other)
{
    if (!other || other.get() == this)
        return;
    ShaderCode::operator=(*other);
    depthWrite = other->depthWrite;
    stencil = other->stencil;
    mipmapsFromInput = other->mipmapsFromInput;
    generateMipMaps = other->generateMipMaps;
    width = other->width;
    height = other->height;
    percent = other->percent;
    custom = other->custom;
    clearNextFrame = true;
}

void ShaderLayer::copyBackToFront()
{
    VEL_ASSERT(fbo);
    fbo->copyBackToFront();
    if (generateMipMaps)
        fbo->front()->generateMipMaps(-1);
}

std::string ShaderLayer::AdaptFromShadertoy(std::string const& shadertoy)
{
    static char const* const RULE = "// ------------------------------------------------------------\n";
    std::string out = "#define iChannel0 iTex0\n#define iChannel1 iTex1\n#define iChannel2 iTex2\n"
                      "#define iChannel3 iTex3\n"
                      // Here iMouse holds three rows; Shadertoy's single vec4 is the first.
                      "#define iMouse iMouse[0]\n"
                      "\n// SHADERTOY CODE STARTS HERE\n";
    out += RULE;
    out += shadertoy;
    if (!shadertoy.empty() && shadertoy.back() != '\n')
        out += '\n';
    out += RULE;
    out += "// SHADERTOY CODE ENDS HERE\n\nvoid main()\n{\n    mainImage(oColor,gl_FragCoord.xy);\n}\n";
    return out;
}

// ------------------------------------------------------------------------------------------
// The text of a layer
// ------------------------------------------------------------------------------------------

std::string ShaderLayer::IOHeader(int g, bool own)
{
    bool const opaque = g <= RunPostOpaque;
    return ShaderManager::Path(opaque ? (own ? "ShaderIO/CustomOpaqueIO" : "ShaderIO/OpaqueIO")
                                      : (own ? "ShaderIO/CustomFinalIO" : "ShaderIO/FinalShaderIO"));
}

std::string ShaderLayer::IOText(int renderStyle, bool own) const
{
    std::string out = "#version 330 core\n";
    if (Rendering::hasMaterials(renderStyle))
        out += "#define RENDER_PBR \n\n";
    out += ShaderManager::ReadFile(IOHeader(group, own));
    if (!out.empty() && out.back() != '\n')
        out += '\n';
    out += IncludesText(includes);
    out += SamplerLines();
    return out;
}

CodeListing ShaderLayer::FragText(int renderStyle, bool expand) const
{
    CodeListing listing;
    listing.files[0] = "Fragment_Shader";
    listing.generated(IOText(renderStyle, custom));
    listing.user(text);
    if (expand)
        ExpandIncludes(listing);
    return listing;
}

CodeListing ShaderLayer::FullText(int renderStyle, bool expand) const
{
    CodeListing listing;
    listing.files[0] = "Fragment_Shader";
    listing.generated("##VERTEX \n"
                      "void main() { \n"
                      "vec2 xy = vec2(gl_VertexID>>1, gl_VertexID&1); \n"
                      "gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); \n"
                      "} \n"
                      "##FRAGMENT \n");
    CodeListing fragment = FragText(renderStyle, expand);
    for (size_t i = 1; i < fragment.files.size(); ++i)
        listing.files.push_back(fragment.files[i]);
    listing.lines.insert(listing.lines.end(), fragment.lines.begin(), fragment.lines.end());
    listing.origins.insert(listing.origins.end(), fragment.origins.begin(), fragment.origins.end());
    return listing;
}

// ------------------------------------------------------------------------------------------
// Compile and use
// ------------------------------------------------------------------------------------------

bool ShaderLayer::compile(int renderStyle)
{
    style = renderStyle;
    if (text.empty())
        return false;
    requested.insert(renderStyle);
    Shared<Shader> program = build(key(), FullText(renderStyle, false));
    if (!program)
        return false; // the last good program of the style stays
    shaders[renderStyle] = program;
    return true;
}

Vector2<int> ShaderLayer::bufferSize() const
{
    float w = percent ? float(ViewWidth) * width / 100.0f : width;
    float h = percent ? float(ViewHeight) * height / 100.0f : height;
    auto clampSide = [](float v) { return std::clamp(int(std::lround(v)), 1, MAX_BUFFER_SIZE); };
    return {clampSide(w), clampSide(h)};
}

unsigned ShaderLayer::use(int renderStyle)
{
    if (custom) {
        Vector2<int> size = bufferSize();
        if (!fbo) {
            fbo = Shared<FBODoubleBuffer>(new FBODoubleBuffer(size.x, size.y));
            clearNextFrame = true;
        } else if (fbo->resize(size.x, size.y)) {
            clearNextFrame = true;
            if (generateMipMaps)
                fbo->front()->generateMipMaps(-1);
        }
    }
    // New code is asked of every style again, each when it is next used; until then (and
    // after a failure) a style keeps its last good program.
    if (dirty && autoCompile) {
        dirty = false;
        requested.clear();
    }
    if (requested.find(renderStyle) == requested.end() && !text.empty())
        compile(renderStyle);
    if (!ActiveAll || !active)
        return 0;
    auto found = shaders.find(renderStyle);
    return found == shaders.end() || !found->second ? 0 : found->second->program;
}

// ------------------------------------------------------------------------------------------
// Running the groups
// ------------------------------------------------------------------------------------------

void ShaderLayer::RunGroup(GLVisual& view, ShaderLayerUniforms const& uniforms, int g)
{
    // Either switch stops them: the class-wide one of the editor and files, or the setting.
    Rendering const& r = Rendering::instance();
    if (!ActiveAll || !r.ShaderLayersActive || !r.ShaderLayerGroupActive[g])
        return;
    ViewWidth = view.width;
    ViewHeight = view.height;
    int const renderStyle = r.style;
    // A copy of the list: the handles keep every layer alive through its run.
    std::deque<Shared<ShaderLayer>> const layers = Rendering::instance().ShaderLayers[g];
    for (Shared<ShaderLayer> const& layer : layers)
        if (layer->use(renderStyle) != 0)
            layer->run(view, uniforms, layer->shaders[renderStyle].get());
}

void ShaderLayer::RenderPreCompositShaderLayers(GLVisual& view, ShaderLayerUniforms const& uniforms, int g)
{
    VEL_ASSERT(0 <= g && g <= 1);
    RunGroup(view, uniforms, g);
}

void ShaderLayer::RenderPostCompositShaderLayers(GLVisual& view, ShaderLayerUniforms const& uniforms, int g)
{
    VEL_ASSERT(2 <= g && g <= 3);
    RunGroup(view, uniforms, g);
}

namespace {

// The stencil test of a layer drawn onto the frame's buffers; false when it has none.
bool SetStencil(int mode, bool composite)
{
    switch (mode) {
    case ShaderLayer::StencilAll:
        if (composite)
            return false;
        glStencilFunc(GL_ALWAYS, 4, 4); // covers everything and marks bit 2
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
        break;
    case ShaderLayer::StencilBackground:
        glStencilFunc(GL_EQUAL, 0, 255);
        break;
    case ShaderLayer::StencilContent:
        glStencilFunc(GL_NOTEQUAL, 0, 255);
        break;
    case ShaderLayer::StencilLayer:
        glStencilFunc(GL_LESS, 1, 255); // where an earlier layer wrote
        break;
    default:
        glStencilFunc(GL_EQUAL, 1, 255); // objects, and no layer over them
        break;
    }
    if (mode != ShaderLayer::StencilAll)
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    gl_Stencil_Test.set(true);
    return true;
}

} // namespace

void ShaderLayer::run(GLVisual& view, ShaderLayerUniforms const& u, Shader* shader)
{
    bool const composite = group >= RunPostComposit;
    bool const pbr = Rendering::hasMaterials(Rendering::instance().style);
    GLLayer* const layer = view.Layers.get();
    int targetWidth = view.width, targetHeight = view.height;
    // The depth the layer reads is a copy: the real one stays attached below for the
    // stencil and depth tests, and GL leaves sampling an attached texture undefined.
    bool const readsDepth = shader && shader->compile() && glGetUniformLocation(shader->program, "iDepth") >= 0;
    Texture2D* const depth = readsDepth ? view.copyDepth() : nullptr;
    if (custom) {
        VEL_ASSERT(fbo->enableDraw());
        targetWidth = fbo->width;
        targetHeight = fbo->height;
        glViewport(0, 0, targetWidth, targetHeight);
        gl_Stencil_Test.set(false);
        if (clearNextFrame) {
            // Both halves: the first run after this one reads zeros, not an old picture.
            static GLfloat const zero[4] = {0, 0, 0, 0};
            for (Texture2D* t : {fbo->back(), fbo->front()}) {
                glDrawBuffer(GLenum(t->attachment));
                glClearBufferfv(GL_COLOR, 0, zero);
            }
            clearNextFrame = false;
            glViewport(0, 0, view.width, view.height);
            return;
        }
        glDrawBuffer(GLenum(fbo->back()->attachment));
        gl_Depth_Test.set(false);
        glDepthMask(GL_FALSE);
    } else if (composite) {
        view.beginPass();
        glDepthMask(GL_FALSE);
        // A stencilled layer draws only part of the target: the rest keeps the picture.
        if (stencil != StencilAll)
            GLCopy(view.current());
        SetStencil(stencil, true);
    } else {
        VEL_ASSERT(layer->enableDraw());
        GLenum const buffers[4] = {GLenum(layer->Normal->attachment), GLenum(layer->RoughMetal->attachment),
                                   GLenum(layer->ColorAlpha->attachment), GLenum(layer->LightThick->attachment)};
        glDrawBuffers(pbr ? 4 : 1, buffers);
        glViewport(0, 0, layer->width, layer->height);
        targetWidth = layer->width;
        targetHeight = layer->height;
        gl_Depth_Test.set(depthWrite);
        glDepthFunc(GL_LESS);
        glDepthMask(depthWrite ? GL_TRUE : GL_FALSE);
        SetStencil(stencil, false);
    }

    // Samplers: the frame's buffers, the noise, the sky and the user's slots.
    struct Input {
        char const* name;
        Texture* texture;
    };
    std::vector<Input> inputs = {
        {"iDepth", depth},
        // A geometry layer draws into the G-buffer: it cannot also read it (undefined in GL).
        {"iNormal", composite ? layer->Normal : nullptr},
        {"iObjectItemsElement", layer->ObjectItemsElement},
        {"iComponentPatchFace", layer->ComponentPatchFaces},
        {"iNoise", Texture2D::Random.get()},
        {"iCubeMap", Rendering::instance().environment()},
    };
    if (composite)
        inputs.push_back({"iImage", view.current()});
    else if (pbr)
        for (char const* name : {"iRoughMetal", "iColorAlpha", "iLightThick"})
            inputs.push_back({name, nullptr});
    static char const* const slotNames[SAMPLERS] = {"iTex0", "iTex1", "iTex2", "iTex3",
                                                    "iTex4", "iTex5", "iTex6", "iTex7"};
    for (int i = 0; i < SAMPLERS; ++i) {
        Texture* t = samplers[size_t(i)].get();
        if (!t)
            continue;
        if (mipmapsFromInput[size_t(i)])
            if (auto* t2 = dynamic_cast<Texture2D*>(t))
                t2->generateMipMaps(-1);
        inputs.push_back({slotNames[i], t});
    }
    GLMachine m;
    m.add(shader);
    for (Input const& in : inputs)
        m.add(in.texture);
    VEL_ASSERT(m.enable());
    // A sampler without a texture still names a unit: one of its own at the top, since two
    // sampler types on one unit make the draw fail.
    int spare = 15;
    for (Input const& in : inputs)
        Shader::setUniform(in.name, in.texture ? in.texture->activeTexture() : spare--);
    Shader::setUniform("iTime", u.time);
    Shader::setUniform("iFrame", u.frame);
    Shader::setUniform("iResolution", float(targetWidth), float(targetHeight));
    Shader::setUniformArray("iMouse", 4, &u.mouse[0].x, 3);
    Shader::setUniform("iFOVLens", u.fovLens);
    Shader::setUniform("iViewToScreen", u.viewToScreen);
    Shader::setUniform("iScreenToView", u.screenToView);
    Shader::setUniform("iWorldToScreen", u.worldToScreen);
    Shader::setUniform("iScreenToWorld", u.screenToWorld);
    Shader::setUniform("iWorldToScreenRotation", u.worldToScreenRotation);
    Shader::setUniform("iScreenToWorldRotation", u.screenToWorldRotation);
    GLFill();
    m.disable();

    if (custom)
        copyBackToFront();
    else if (composite)
        view.endPass();
    glViewport(0, 0, view.width, view.height);
    gl_Stencil_Test.set(false);
    gl_Depth_Test.set(false);
    glDepthMask(GL_TRUE);
}

void ShaderLayer::ResetAllCustomShaderLayers()
{
    for (auto const& list : Rendering::instance().ShaderLayers)
        for (Shared<ShaderLayer> const& layer : list)
            if (layer->custom)
                layer->clearNextFrame = true;
}


// ------------------------------------------------------------------------------------------
// Scene storage
// ------------------------------------------------------------------------------------------

namespace {

constexpr int LAYER_FORMAT = 1;
constexpr int MAX_CODE = 4 << 20;   // bytes of GLSL in a layer
constexpr int MAX_NAME = 4096;      // bytes of an include name or texture path
constexpr int MAX_INCLUDES = 256;

} // namespace

void ShaderLayer::DataWrite(std::ostream& out) const
{
    PutValue(out, LAYER_FORMAT);
    PutString(out, text);
    PutValue(out, active);
    PutValue(out, autoCompile);
    PutValue(out, depthWrite);
    PutValue(out, stencil);
    for (bool b : mipmapsFromInput)
        PutValue(out, b);
    PutValue(out, generateMipMaps);
    PutValue(out, int(includes.size()));
    for (std::string const& name : includes)
        PutString(out, name);
    Rendering& rendering = Rendering::instance();
    for (Shared<Texture> const& t : samplers) {
        char g = 0;
        int index = -1;
        if (t && rendering.FindCustomShaderLayer(t.get(), g, index)) {
            VEL_ASSERT(g >= 0);
            PutValue(out, char(2));
            PutValue(out, g);
            PutValue(out, index);
        } else if (t && !t->name.empty()) {
            PutValue(out, char(1));
            PutString(out, t->name);
        } else {
            PutValue(out, char(0)); // none, or a texture without a path: it can't come back
        }
    }
    PutValue(out, custom);
    PutValue(out, percent);
    PutValue(out, width);
    PutValue(out, height);
}

bool ShaderLayer::DataRead(std::istream& in, std::array<std::pair<int, int>, SAMPLERS>& layerRefs)
{
    ShaderLayer read;
    int format = 0;
    if (!GetValue(in, format) || format != LAYER_FORMAT || !GetString(in, read.text, MAX_CODE) ||
        !GetValue(in, read.active) || !GetValue(in, read.autoCompile) || !GetValue(in, read.depthWrite) || !GetValue(in, read.stencil) ||
        read.stencil < StencilAll || read.stencil > StencilScene)
        return false;
    for (bool& b : read.mipmapsFromInput)
        if (!GetValue(in, b))
            return false;
    int count = 0;
    if (!GetValue(in, read.generateMipMaps) || !GetValue(in, count) || count < 0 || count > MAX_INCLUDES)
        return false;
    read.includes.resize(size_t(count));
    for (std::string& name : read.includes)
        if (!GetString(in, name, MAX_NAME))
            return false;
    std::array<std::string, SAMPLERS> paths;
    layerRefs.fill({-1, -1});
    for (int i = 0; i < SAMPLERS; ++i) {
        char kind = 0;
        if (!GetValue(in, kind))
            return false;
        if (kind == 1) {
            if (!GetString(in, paths[size_t(i)], MAX_NAME))
                return false;
        } else if (kind == 2) {
            char g = 0;
            int index = 0;
            if (!GetValue(in, g) || !GetValue(in, index) || g < 0 || g >= GROUPS || index < 0)
                return false;
            layerRefs[size_t(i)] = {g, index};
        } else if (kind != 0) {
            return false;
        }
    }
    if (!GetValue(in, read.custom) || !GetValue(in, read.percent) || !GetValue(in, read.width) || !GetValue(in, read.height))
        return false;
    float const limit = read.percent ? 100.0f * MAX_BUFFER_SIZE / 16.0f : float(MAX_BUFFER_SIZE);
    if (!(read.width > 0 && read.width <= limit && read.height > 0 && read.height <= limit))
        return false;

    text = std::move(read.text);
    active = read.active;
    autoCompile = read.autoCompile;
    depthWrite = read.depthWrite;
    stencil = read.stencil;
    mipmapsFromInput = read.mipmapsFromInput;
    generateMipMaps = read.generateMipMaps;
    includes = std::move(read.includes);
    custom = read.custom;
    percent = read.percent;
    width = read.width;
    height = read.height;
    for (int i = 0; i < SAMPLERS; ++i)
        samplers[size_t(i)] = paths[size_t(i)].empty() ? Shared<Texture>()
                                                       : TextureManager::instance().AddFile(paths[size_t(i)]);
    dirty = true;
    clearNextFrame = true;
    shaders.clear();
    requested.clear();
    return true;
}

} // namespace vel
