#include "OpenGL/GLVisual.h"

#include "Core/Assert.h"
#include "OpenGL/Camera.h"
#include "OpenGL/Environment.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLFilters.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/TextureCube.h"
#include "Scene/RenderFlags.h"
#include "Scene/Tool.h"
#include "OpenGL/ViewProjection.h"
#include "Scene/ToolList.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>
#include <vector>

namespace vel {

namespace {

constexpr float AMBIENT = 0.25f;           // light floor of the shaded styles
constexpr float REFRACTION_PIXELS = 32.0f; // displacement of a unit normal at unit thickness
Vector4<float> const COLOR_FRONT{0.8f, 0.8f, 0.8f, 1.0f};
Vector4<float> const COLOR_BACK{0.55f, 0.4f, 0.35f, 1.0f};
Vector4<float> const CONTOUR_COLOR{0.0f, 0.0f, 0.0f, 1.0f};
// Towards the light of the shaded styles, in view space: above and left of the camera.
Vector3<float> LightDirection()
{
    return Vector3<float>(-0.3f, 0.5f, 1.0f).normalize();
}

using Samplers = std::initializer_list<std::pair<char const*, Texture*>>;

// One full-screen draw of `shader` with `textures` bound under their sampler names; `uniforms`
// sets the rest once the program is in use.
template <class Uniforms>
void FullScreen(Shader* shader, Samplers textures, Uniforms&& uniforms)
{
    GLMachine m;
    m.add(shader);
    for (auto const& t : textures)
        m.add(t.second);
    VEL_ASSERT(m.enable());
    for (auto const& t : textures)
        Shader::setUniform(t.first, t.second->activeTexture());
    uniforms();
    GLFill();
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Construction and size

GLVisual::GLVisual(int width, int height)
    : GLComposit(width, height, false)
    , Transparent(new GLComposit(width, height, false))
    , ShaderLayersFbo(new FBO(dsNone, width, height))
    , Blur0(new FBO(dsNone, std::max(1, width / BlurDivisor), std::max(1, height / BlurDivisor)))
{
    ShaderLayersFbo->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    Blur0->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    Blur0->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    // The effects' targets are described here and follow each resize, so that no frame makes one.
    FXfbo = Shared<FBO>(new FBO(dsNone, Blur0->width, Blur0->height));
    FXfbo->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    for (int i = 0; i < ChainLevels; ++i) {
        BlurChain.emplace_back(new FBO(dsNone, 1, 1));
        BlurChain.back()->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
        BlurChain.back()->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    }
    LayerColors = FBO::ColorsOf(Layers.get());
    resizeEffects();
}

GLVisual::~GLVisual() = default;

bool GLVisual::resize(int w, int h)
{
    bool changed = GLComposit::resize(w, h);
    changed = ShaderLayersFbo->resize(w, h) || changed;
    changed = Transparent->resize(w, h) || changed;
    changed = LayerColors->resize(w, h) || changed;
    changed = Blur0->resize(std::max(1, w / BlurDivisor), std::max(1, h / BlurDivisor)) || changed;
    resizeEffects();
    return changed;
}

void GLVisual::resizeEffects()
{
    // Reflections are soft and few pixels show them: half of Blur0 (a quarter of the window)
    // is enough, and the add filters them up.
    FXfbo->resize(std::max(1, Blur0->width / 2), std::max(1, Blur0->height / 2));
    int w = Blur0->width, h = Blur0->height;
    for (Shared<FBO> const& level : BlurChain) {
        w = std::max(1, w / 2);
        h = std::max(1, h / 2);
        level->resize(w, h);
    }
    if (minMaxChain.empty() || minMaxChain.front()->width != std::max(1, this->width >> 1) ||
        minMaxChain.front()->height != std::max(1, this->height >> 1))
        minMaxChain = MinMaxChain(this->width, this->height);
}

// ---------------------------------------------------------------------------------------------
// Matrices

void GLVisual::buildMatrices(Camera const& camera, Vector2<float> const& offset)
{
    Rendering const& r = Rendering::instance();
    double const w = double(this->width), h = double(this->height);
    double const aspect = w / h;
    double viewSize = 0.0, lens = 0.0;
    Matrix4<double> const P = ViewProjection::Projection(camera.distance, aspect, this->height, r.FieldOfView, zNear,
                                                         zFar, r.cameraType == 1, viewSize, lens);
    Shader::ViewSize = float(viewSize);
    Shader::Lens = float(lens);
    // The jitter moves the picture in clip space: offset pixels are 2 offset / size there.
    Matrix4<double> O;
    O.m[12] = 2.0 * offset.x / w;
    O.m[13] = 2.0 * offset.y / h;
    Shader::ProjectionOffset = O;
    Shader::ProjectionMatrix = P;
    Shader::ProjectionMatrixInv = inv(P);
    Shader::ProjectionOffsetMatrix = P * O;
    Shader::ModelMatrix = Matrix34<double>();
    Shader::ModelViewMatrix = camera.modelView();
    Shader::ModelViewMatrixInv = inv(Shader::ModelViewMatrix);
    Shader::NormalMatrix = Shader::ModelViewMatrix.linear();
    Shader::NormalMatrixInv = inv(Shader::NormalMatrix);
    // What the draws use: the jittered projection.
    Shader::ProjectionModelViewMatrix = Matrix4<double>(Shader::ModelViewMatrix) * Shader::ProjectionOffsetMatrix;
    Shader::ProjectionOffsetModelViewMatrix = Shader::ProjectionModelViewMatrix;
    Shader::ProjectionModelViewMatrixInv = inv(Shader::ProjectionModelViewMatrix);
    Shader::PMVSign = Shader::ModelViewMatrix.determinant() < 0 ? -1.0f : 1.0f;
    focusDistance = float(camera.distance);
}

Vector3<float> GLVisual::whLens() const
{
    return {this->width * 0.5f, this->height * 0.5f, Shader::Lens};
}

// ---------------------------------------------------------------------------------------------
// Object passes

void GLVisual::renderClear()
{
    Rendering const& r = Rendering::instance();
    Layers->renderClear(r.renderState(Rendering::hasMaterials(r.style) ? 0 : GLLayer::KIND_PLAIN), nullptr);
    contentFlags.reset();
    objectCalls = 0;
}

void GLVisual::renderObjects(ToolList& list, bool clear, bool third)
{
    Rendering const& r = Rendering::instance();
    if (!Rendering::hasMaterials(r.style)) {
        TRenderState state = r.renderState(GLLayer::KIND_PLAIN);
        state.third = third;
        Layers->render(state, false, list, nullptr);
        if (objectCalls < LISTS)
            contentFlags[size_t(2 * objectCalls)] = !list.sorted[ToolList::DRAW_OPAQUE].empty();
        ++objectCalls;
        return;
    }
    bool const transparent = !list.sorted[ToolList::DRAW_TRANSPARENT].empty();
    if (objectCalls < LISTS) {
        contentFlags[size_t(2 * objectCalls)] = !list.sorted[ToolList::DRAW_OPAQUE].empty();
        contentFlags[size_t(2 * objectCalls + 1)] = transparent;
    }
    ++objectCalls;
    TRenderState state = r.renderState(0);
    state.third = third;
    Layers->render(state, false, list, nullptr);
    if (transparent || clear) {
        state.kind = 1;
        Transparent->Layers->render(state, clear, list, Layers.get());
    }
}

bool GLVisual::hasTransparent() const
{
    for (int i = 0; i < LISTS; ++i)
        if (contentFlags[size_t(2 * i + 1)])
            return true;
    return false;
}

void GLVisual::calculateNormals(Matrix4<double> const& projectionInv)
{
    // The layer's colour targets without the depth that the pass reads.
    VEL_ASSERT(LayerColors->enableDraw());
    glViewport(0, 0, this->width, this->height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    GLNormals(DepthStencil(), Layers->Normal, Layers->NormalNormalized, Matrix4<float>(projectionInv));
}

// ---------------------------------------------------------------------------------------------
// Composites

Vector4<float> GLVisual::background() const
{
    return Rendering::instance().clearColor();
}

void GLVisual::composit(float time)
{
    Rendering const& r = Rendering::instance();
    effectTime = time;
    ++effectFrame;
    if (!r.fast) {
        Layers->normalizeNormals();
        FBO::disable(fbRead);
    }
    switch (r.style) {
    case 0:
        compositFlat();
        break;
    case 1:
        compositDepth(r.autoDepthRange);
        break;
    case 2:
        compositIDs();
        break;
    case 3:
        compositNormals();
        break;
    case 4:
        compositShaded();
        break;
    case 5:
        compositMatCap();
        break;
    case Rendering::STYLE_COLOR:
        compositColor(this, true);
        break;
    default:
        compositPBR(this, true, time);
        break;
    }
    if (Rendering::hasMaterials(r.style) && hasTransparent()) {
        if (!r.fast)
            Transparent->Layers->normalizeNormals();
        if (r.style == Rendering::STYLE_COLOR)
            compositColor(Transparent.get(), false);
        else
            compositPBR(Transparent.get(), false, time);
    }
    int const s = r.style;
    if (r.objectTypes && (s == 0 || s == 4 || s == 5 || Rendering::hasMaterials(s)))
        objectType();
}

void GLVisual::compositFlat()
{
    ShaderManager& sm = ShaderManager::instance();
    beginPass();
    FullScreen(sm.ShaderCompositFlat, {{"Flags", Layers->Normal}}, [&] {
        Shader::setUniform("Background", background());
        Shader::setUniform("ColorFront", COLOR_FRONT);
    });
    FullScreen(sm.ShaderCompositFlatBack, {{"Flags", Layers->Normal}},
               [&] { Shader::setUniform("ColorBack", COLOR_BACK); });
    endPass();
}

void GLVisual::compositDepth(bool autoRange)
{
    Rendering const& r = Rendering::instance();
    ShaderManager& sm = ShaderManager::instance();
    Texture2D* depth = DepthStencil();
    // The range of the drawn depths, as eye distances; the whole depth range without it.
    float lo = zNear, hi = zFar;
    if (autoRange && contentFlags.any()) {
        Vector2<float> range = drawnRange();
        lo = range.x;
        hi = range.y;
    }
    beginEffect();
    FullScreen(r.cameraType == 1 ? sm.ShaderDepthMapOrthogonal : sm.ShaderDepthMapPerspective, {{"Depth", depth}},
               [&] {
                   Shader::setUniform("NearFar", zNear, zFar);
                   Shader::setUniform("Range", lo, hi);
                   Shader::setUniform("Background", background());
               });
    endEffect();
}

void GLVisual::compositIDs()
{
    beginPass();
    FullScreen(ShaderManager::instance().ShaderCompositIDs, {{"IDs", Layers->ObjectItemsElement}},
               [&] { Shader::setUniform("Background", background()); });
    endPass();
}

void GLVisual::compositNormals()
{
    beginPass();
    FullScreen(ShaderManager::instance().ShaderCompositNormals,
               {{"Flags", Layers->Normal}, {"Normal", Layers->NormalNormalized}},
               [&] { Shader::setUniform("Background", background()); });
    endPass();
}

void GLVisual::compositShaded()
{
    ShaderManager& sm = ShaderManager::instance();
    Samplers const textures{{"Flags", Layers->Normal}, {"Normal", Layers->NormalNormalized}};
    auto light = [] {
        Shader::setUniform("LightDirection", LightDirection());
        Shader::setUniform("Ambient", AMBIENT);
    };
    beginPass();
    FullScreen(sm.ShaderCompositShaded, textures, [&] {
        light();
        Shader::setUniform("Background", background());
        Shader::setUniform("ColorFront", COLOR_FRONT);
    });
    FullScreen(sm.ShaderCompositShadedBack, textures, [&] {
        light();
        Shader::setUniform("ColorBack", COLOR_BACK);
    });
    endPass();
}

void GLVisual::compositMatCap()
{
    ShaderManager& sm = ShaderManager::instance();
    VEL_ASSERT(Rendering::instance().matcap && "the matcap style needs Rendering's resources");
    Samplers const textures{
        {"Flags", Layers->Normal}, {"Normal", Layers->NormalNormalized}, {"iMatCap", Rendering::instance().matcap.get()}};
    beginPass();
    for (Shader* shader : {sm.ShaderCompositMatCap, sm.ShaderCompositMatCapBackFace})
        FullScreen(shader, textures, [&] {
            Shader::setUniform("Background", background());
            Shader::setUniform("ColorFront", shader == sm.ShaderCompositMatCap ? COLOR_FRONT : COLOR_BACK);
        });
    endPass();
}

void GLVisual::compositColor(GLComposit* target, bool opaque)
{
    Rendering const& r = Rendering::instance();
    ShaderManager& sm = ShaderManager::instance();
    GLLayer* layer = target->Layers.get();
    target->beginPass();
    FullScreen(r.glow > 0 ? sm.ShaderCompositColorGlow : sm.ShaderCompositColor,
               {{"Flags", layer->Normal},
                {"Normal", layer->NormalNormalized},
                {"Color", layer->ColorAlpha},
                {"Light", layer->LightThick}},
               [&] {
                   Shader::setUniform("LightDirection", LightDirection());
                   Shader::setUniform("Ambient", AMBIENT);
                   Shader::setUniform("glowStrength", r.glow);
                   Shader::setUniform("Opaque", opaque ? 1 : 0);
               });
    target->endPass();
}

void GLVisual::compositPBR(GLComposit* target, bool opaque, float time)
{
    Rendering const& r = Rendering::instance();
    ShaderManager& sm = ShaderManager::instance();
    TextureCube* cube = sky;
    Texture* table = brdfLUT;
    float levels = std::floor(std::log2(float(std::max(1, sky ? sky->width() : 1))));
    if (!cube) {
        Environment* environment = r.environment();
        VEL_ASSERT(environment && environment->compile());
        VEL_ASSERT(vel::Rendering::instance().environment()->Compiled);
        cube = environment;
        levels = float(environment->maxLevel());
    }
    if (!table) {
        VEL_ASSERT(r.BRDF && r.BRDF->id() != 0);
        VEL_ASSERT(vel::Rendering::instance().BRDF->Compiled);
        table = r.BRDF.get();
    }
    GLLayer* layer = target->Layers.get();
    // The environment turns with the light.
    Matrix3<float> rotation(Shader::NormalMatrixInv);
    if (r.RotateLight != 0)
        rotation = rotation * Matrix3<float>::Rotation(0.0, double(r.RotateLight) * time, 0.0);
    target->beginPass();
    FullScreen(r.glow > 0 ? sm.ShaderCompositPBRGlow : sm.ShaderCompositPBR,
               {{"Flags", layer->Normal},
                {"Normal", layer->NormalNormalized},
                {"Color", layer->ColorAlpha},
                {"Material", layer->RoughMetal},
                {"Light", layer->LightThick},
                {"sky", cube},
                {"brdfLUT", table}},
               [&] {
                   Shader::setUniform("levels", levels);
                   Shader::setUniform("rotation", rotation);
                   Shader::setUniform("whLens", whLens());
                   Shader::setUniform("glowStrength", r.glow);
                   Shader::setUniform("Opaque", opaque ? 1 : 0);
               });
    target->endPass();
}

// ---------------------------------------------------------------------------------------------
// Transparency

Texture2D* GLVisual::opaqueLevel(int n) const
{
    if (n == 0)
        return current();
    return n == 1 ? Blur0->color(0) : BlurChain[size_t(n - 2)]->color(0);
}

std::vector<Texture2D*> GLVisual::blurDown()
{
    // Blur0 is bound by the caller, which filled its level.
    std::vector<Texture2D*> levels{Blur0->color(0)};
    GLBlur(levels.back(), Blur0->color(1), 1, false);
    for (Shared<FBO> const& level : BlurChain) {
        VEL_ASSERT(level->enableDraw());
        glViewport(0, 0, level->width, level->height);
        GLCopy(levels.back(), level->color(0));
        GLBlur(level->color(0), level->color(1), 1, false);
        levels.push_back(level->color(0));
    }
    return levels;
}

void GLVisual::blurLevels()
{
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    VEL_ASSERT(Blur0->enableDraw());
    glViewport(0, 0, Blur0->width, Blur0->height);
    GLCopy(current(), Blur0->color(0));
    blurDown();
}

void GLVisual::mixRefract()
{
    // Nothing transparent: the mix would give the opaque picture back.
    if (!Rendering::hasMaterials(Rendering::instance().style) || !hasTransparent())
        return;
    blurLevels();
    Rendering const& r = Rendering::instance();
    ShaderManager& sm = ShaderManager::instance();
    GLLayer* front = Transparent->Layers.get();
    Shader* shader = r.chroma != 0 ? (r.glow > 0 ? sm.ShaderMixRefractGlowChroma : sm.ShaderMixRefractChroma)
                                   : (r.glow > 0 ? sm.ShaderMixRefractGlow : sm.ShaderMixRefract);
    beginEffect(); // both depth textures are read, and this one is ours
    GLMachine m{shader};
    for (int i = 0; i <= OpaquesMax; ++i)
        m.add(opaqueLevel(i));
    for (Texture2D* t : {Transparent->current(), DepthStencil(), Transparent->DepthStencil(), front->LightThick,
                         front->NormalNormalized, front->RoughMetal})
        m.add(t);
    VEL_ASSERT(m.enable());
    int units[OpaquesMax + 1];
    for (int i = 0; i <= OpaquesMax; ++i)
        units[i] = opaqueLevel(i)->activeTexture();
    Shader::setUniformArray("Opaques", 1, units, OpaquesMax + 1);
    Shader::setUniform("Transparent", Transparent->current()->activeTexture());
    Shader::setUniform("OpaqueDepth", DepthStencil()->activeTexture());
    Shader::setUniform("TransparentDepth", Transparent->DepthStencil()->activeTexture());
    Shader::setUniform("Refraction", front->LightThick->activeTexture());
    Shader::setUniform("Light", front->LightThick->activeTexture());
    Shader::setUniform("Normal", front->NormalNormalized->activeTexture());
    Shader::setUniform("Material", front->RoughMetal->activeTexture());
    Shader::setUniform("wh", REFRACTION_PIXELS / float(this->width), REFRACTION_PIXELS / float(this->height));
    Shader::setUniform("chroma", r.chroma);
    Shader::setUniform("glowStrength", r.glow);
    GLFill();
    m.disable();
    endEffect();
}

// ---------------------------------------------------------------------------------------------
// Screen effects

std::deque<FBOTexture*> GLVisual::rangeChain() const
{
    std::deque<FBOTexture*> chain;
    for (Shared<FBOTexture> const& t : minMaxChain)
        chain.push_back(t.get());
    return chain;
}

Vector2<float> GLVisual::drawnRange()
{
    Vector2<float> range = GLMinMax(DepthStencil(), rangeChain());
    if (range.x > range.y) // nothing was drawn
        return {zNear, zFar};
    bool const orthographic = Rendering::instance().cameraType == 1;
    auto eye = [&](float d) {
        if (orthographic)
            return zNear + d * (zFar - zNear);
        return 2 * zNear * zFar / (zFar + zNear - (2 * d - 1) * (zFar - zNear));
    };
    return {eye(range.x), eye(range.y)};
}

bool GLVisual::hasContours(ToolList const& list)
{
    for (RenderItem const& item : list.items)
        if (item.tool && (item.tool->renderFlags() & FLAG_CONTOURS))
            return true;
    return false;
}

void GLVisual::contour()
{
    Rendering const& r = Rendering::instance();
    beginPass();
    // In place: only the outline is written, so the picture stays current().
    GLContour(current(), Layers->ObjectItemsElement, Layers->Normal, *Tiles, current(), r.contours, CONTOUR_COLOR,
              r.wireframe);
    if (mipmaps)
        current()->generateMipMaps(-1);
}

void GLVisual::fog()
{
    // The range of drawn depths stays on the GPU: a read-back here would wait for the frame.
    std::deque<FBOTexture*> const chain = rangeChain();
    GLMinMaxReduce(DepthStencil(), chain);
    Vector4<float> colour = background();
    colour.w = Rendering::instance().fogStrength;
    Texture2D* depth = effectDepth();
    beginInPlace(Cover::Surfaces);
    GLFogOver(chain.back()->texture(), colour, depth, current());
    endInPlace();
}

void GLVisual::SSR()
{
    Rendering const& r = Rendering::instance();
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    VEL_ASSERT(FXfbo->enableDraw());
    glViewport(0, 0, FXfbo->width, FXfbo->height);
    GLSSR(current(), DepthStencil(), Layers->NormalNormalized, r.style == Rendering::STYLE_PBR ? Layers->RoughMetal : nullptr,
          FXfbo->color(0), r.ssrRays, SSR_ROUGHNESS, effectFrame);
    // The background reflects nothing: the add leaves it out.
    beginInPlace(Cover::Surfaces);
    GLAddScaled(FXfbo->color(0), r.ssrStrength, current());
    endInPlace();
}

void GLVisual::bloom()
{
    Rendering const& r = Rendering::instance();
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    VEL_ASSERT(Blur0->enableDraw());
    glViewport(0, 0, Blur0->width, Blur0->height);
    GLThresholdMul(current(), r.bloomThreshold, r.bloom, Blur0->color(0));
    std::vector<Texture2D*> levels = blurDown();
    // Each level is added into the one above, smallest first, and the first onto the picture in
    // place: the full-size pass reads one texture, not every level and the picture.
    for (size_t i = levels.size() - 1; i > 0; --i) {
        FBO* above = i == 1 ? Blur0.get() : BlurChain[i - 2].get();
        VEL_ASSERT(above->enableDraw());
        glViewport(0, 0, above->width, above->height);
        GLAdd({levels[i]}, levels[i - 1], true);
    }
    beginInPlace(Cover::All);
    GLAdd({levels.front()}, current(), true);
    endInPlace();
}

void GLVisual::tonemap()
{
    Rendering const& r = Rendering::instance();
    beginPass();
    GLTonemap(current(), next(), r.exposure, r.gamma, r.tonemap);
    endPass();
}

void GLVisual::chromaticAberration()
{
    beginPass();
    // Red stays, green moves half as far as blue: three lens shifts.
    GLChroma(current(), next(), {0.0f, 0.5f, 1.0f, 0.0f}, Rendering::instance().lensChroma, {0.5f, 0.5f});
    endPass();
}

void GLVisual::depthOfField()
{
    float const size = Rendering::instance().dofSize;
    blurLevels();
    std::vector<Texture2D*> blurred;
    for (int i = 1; i <= OpaquesMax; ++i)
        blurred.push_back(opaqueLevel(i));
    Texture2D* depth = effectDepth();
    beginInPlace(Cover::Surfaces);
    GLDepthOfFieldOver(blurred, depth, current(), focusDistance, size);
    endInPlace();
    if (size <= 0)
        return;
    // The background is as far as can be: the most blurred level alone, at the cost of a copy.
    beginInPlace(Cover::Background);
    GLCopy(blurred.back(), current());
    endInPlace();
}

} // namespace vel
