#include "OpenGL/GLFilters.h"

#include "Core/Assert.h"
#include "OpenGL/EdgeTiles.h"
#include "OpenGL/FBOTexture.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"

#include <glad/gl.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace vel {

namespace {

// One filter draw: the target's draw buffer, a machine of the shader and the named sources,
// each sampler set to its source's unit. Uniforms go between construction and draw().
class FilterPass {
public:
    FilterPass(Shader* shader, std::initializer_list<std::pair<char const*, Texture2D*>> samplers, Texture2D* target)
    {
        BindDrawBuffer(target);
        m.add(shader);
        for (auto const& sampler : samplers)
            m.add(sampler.second);
        VEL_ASSERT(m.enable());
        for (auto const& sampler : samplers)
            Shader::setUniform(sampler.first, sampler.second->activeTexture());
    }
    void draw() { GLFill(); }

private:
    GLMachine m;
};

ShaderManager& Shaders()
{
    return ShaderManager::instance();
}

// The caller's blending state, given back when this goes out of scope; the static setters
// choose how a pass combines with what its target holds.
class SavedBlend {
public:
    SavedBlend()
    {
        wasEnabled = glIsEnabled(GL_BLEND) == GL_TRUE;
        glGetIntegerv(GL_BLEND_SRC_RGB, &srcRGB);
        glGetIntegerv(GL_BLEND_DST_RGB, &dstRGB);
        glGetIntegerv(GL_BLEND_SRC_ALPHA, &srcAlpha);
        glGetIntegerv(GL_BLEND_DST_ALPHA, &dstAlpha);
        glGetIntegerv(GL_BLEND_EQUATION_RGB, &equationRGB);
        glGetIntegerv(GL_BLEND_EQUATION_ALPHA, &equationAlpha);
    }
    ~SavedBlend()
    {
        glBlendEquationSeparate(GLenum(equationRGB), GLenum(equationAlpha));
        glBlendFuncSeparate(GLenum(srcRGB), GLenum(dstRGB), GLenum(srcAlpha), GLenum(dstAlpha));
        if (wasEnabled)
            glEnable(GL_BLEND);
        else
            glDisable(GL_BLEND);
    }
    SavedBlend(SavedBlend const&) = delete;
    SavedBlend& operator=(SavedBlend const&) = delete;

    // target + source for `add`; off for a pass that replaces what the target holds.
    static void setAdd(bool add)
    {
        if (!add) {
            glDisable(GL_BLEND);
            return;
        }
        set(GL_ONE, GL_ONE, GL_ONE, GL_ONE);
    }
    // target + factor * source.
    static void setScaledAdd(float factor)
    {
        glBlendColor(factor, factor, factor, factor);
        set(GL_CONSTANT_COLOR, GL_ONE, GL_CONSTANT_ALPHA, GL_ONE);
    }
    // target.rgb * source.rgb, the target's alpha kept.
    static void setMultiply() { set(GL_ZERO, GL_SRC_COLOR, GL_ZERO, GL_ONE); }
    // mix(target.rgb, source.rgb, source.a), the target's alpha kept.
    static void setOver() { set(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE); }

private:
    static void set(GLenum srcColour, GLenum dstColour, GLenum srcA, GLenum dstA)
    {
        glEnable(GL_BLEND);
        glBlendEquation(GL_FUNC_ADD);
        glBlendFuncSeparate(srcColour, dstColour, srcA, dstA);
    }

    bool wasEnabled = false;
    int srcRGB = GL_ONE, dstRGB = GL_ZERO, srcAlpha = GL_ONE, dstAlpha = GL_ZERO;
    int equationRGB = GL_FUNC_ADD, equationAlpha = GL_FUNC_ADD;
};

} // namespace

// ---- copies and point-wise filters

void GLCopy(Texture2D* source, Texture2D* target)
{
    GLSimpleFilter(Shaders().ShaderCopy, source, target);
}

void GLCopyGreyMax(Texture2D* source, Texture2D* target)
{
    GLSimpleFilter(Shaders().ShaderCopyGreyMax, source, target);
}

void GLMirrorVertical(Texture2D* source, Texture2D* target)
{
    GLSimpleFilter(Shaders().ShaderMirrorVertical, source, target);
}

void GLClamp(Texture2D* source, Texture2D* target)
{
    GLSimpleFilter(Shaders().ShaderFilterClamp, source, target);
}

void GLNormalize(Texture2D* source, Texture2D* target)
{
    GLSimpleFilter(Shaders().ShaderNormalize, source, target);
}

void GLMul(Texture2D* source, Vector4<float> factor, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterMul, {{"Image", source}}, target);
    Shader::setUniform("factor", factor);
    pass.draw();
}

void GLMul(Texture2D* a, Texture2D* b, Texture2D* target)
{
    FilterPass(Shaders().ShaderFilterMul2, {{"Image0", a}, {"Image1", b}}, target).draw();
}

void GLAdd(Texture2D* source, Vector4<float> addend, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterAdd, {{"Image", source}}, target);
    Shader::setUniform("addend", addend);
    pass.draw();
}

void GLAdd(Texture2D* a, Texture2D* b, float factor, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterAddFactor, {{"Image0", a}, {"Image1", b}}, target);
    Shader::setUniform("factor", factor);
    pass.draw();
}

void GLMix(Texture2D* a, Texture2D* b, float factor, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterMix, {{"Image0", a}, {"Image1", b}}, target);
    Shader::setUniform("factor", factor);
    pass.draw();
}

void GLMixDepth(Texture2D* a, Texture2D* depthA, Texture2D* b, Texture2D* depthB, float factor, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterMixDepth, {{"Image0", a}, {"Depth0", depthA}, {"Image1", b}, {"Depth1", depthB}},
                    target);
    Shader::setUniform("factor", factor);
    pass.draw();
}

void GLThreshold(Texture2D* source, float threshold, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterThreshold, {{"Image", source}}, target);
    Shader::setUniform("threshold", threshold);
    pass.draw();
}

void GLThresholdMul(Texture2D* source, float threshold, float factor, Texture2D* target)
{
    FilterPass pass(Shaders().ShaderFilterThresholdMul, {{"Image", source}}, target);
    Shader::setUniform("threshold", threshold);
    Shader::setUniform("factor", factor);
    pass.draw();
}

void GLNoise(Texture2D* source, Texture2D* target, int frame, float strength)
{
    FilterPass pass(Shaders().ShaderNoise, {{"Image", source}}, target);
    Shader::setUniform("frame", frame);
    Shader::setUniform("strength", strength);
    pass.draw();
}

void GLNormals(Texture2D* depth, Texture2D* flags, Texture2D* target, Matrix4<float> const& matrix)
{
    FilterPass pass(Shaders().ShaderNormals, {{"Depth", depth}, {"Image", flags}}, target);
    Shader::setUniform("matrix", matrix);
    pass.draw();
}

// ---- sums

void GLAdd(std::vector<Texture2D*> const& sources, Texture2D* target, bool accumulate)
{
    VEL_ASSERT_MSG(!sources.empty(), "GLAdd needs at least one source");
    ShaderManager& shaders = Shaders();
    Shader* const byCount[] = {nullptr, shaders.ShaderCopy, shaders.ShaderFilterAdd2, shaders.ShaderFilterAdd3,
                               shaders.ShaderFilterAdd4, shaders.ShaderFilterAdd5};
    char const* const names[] = {"Image0", "Image1", "Image2", "Image3", "Image4"};
    SavedBlend saved;
    for (size_t first = 0; first < sources.size(); first += 5) {
        size_t count = std::min<size_t>(5, sources.size() - first);
        SavedBlend::setAdd(accumulate || first > 0);
        BindDrawBuffer(target);
        GLMachine m;
        m.add(byCount[count]);
        for (size_t i = 0; i < count; ++i)
            m.add(sources[first + i]);
        VEL_ASSERT(m.enable());
        for (size_t i = 0; i < count; ++i)
            Shader::setUniform(count == 1 ? "Image" : names[i], sources[first + i]->activeTexture());
        GLFill();
    }
}

void GLAddScaled(Texture2D* source, float factor, Texture2D* target)
{
    SavedBlend saved;
    SavedBlend::setScaledAdd(factor);
    FilterPass pass(Shaders().ShaderCopy, {{"Image", source}}, target);
    pass.draw();
}

void GLAddMipMaps(std::vector<Texture2D*> const& sources, int level, Texture2D* target)
{
    VEL_ASSERT_MSG(!sources.empty(), "GLAddMipMaps needs at least one source");
    SavedBlend saved;
    for (size_t first = 0; first < sources.size(); first += 2) {
        SavedBlend::setAdd(first > 0);
        bool pair = first + 1 < sources.size();
        if (pair) {
            FilterPass pass(Shaders().ShaderFilterAdd2MipMaps, {{"Image0", sources[first]}, {"Image1", sources[first + 1]}},
                            target);
            Shader::setUniform("level", level);
            pass.draw();
        } else {
            FilterPass pass(Shaders().ShaderFilterAddMipMaps, {{"Image", sources[first]}}, target);
            Shader::setUniform("level", level);
            pass.draw();
        }
    }
}

// ---- neighbourhood filters

void GLMedian(Texture2D* source, Texture2D* target, int size)
{
    FilterPass pass(Shaders().ShaderFilterMedian, {{"Image", source}}, target);
    Shader::setUniform("size", std::clamp(size, 0, 2));
    pass.draw();
}

void GLBlur(Texture2D* source, Texture2D* target, int count, bool simple)
{
    Shader* shader = simple ? Shaders().ShaderFilterBlurSimple : Shaders().ShaderFilterBlur;
    int const alongX[2] = {1, 0}, alongY[2] = {0, 1};
    for (int round = 0; round < count; ++round) {
        {
            FilterPass pass(shader, {{"Image", source}}, target);
            Shader::setUniformArray("delta", 2, alongX, 1);
            pass.draw();
        }
        FilterPass pass(shader, {{"Image", target}}, source);
        Shader::setUniformArray("delta", 2, alongY, 1);
        pass.draw();
    }
}

void GLGaussianBlur(Texture2D* source, Texture2D* target, float sigma, int radius)
{
    FilterPass pass(Shaders().ShaderFilterGaussianBlur, {{"Image", source}}, target);
    Shader::setUniform("sigma", sigma);
    Shader::setUniform("radius", std::clamp(radius, 0, 8));
    pass.draw();
}

// ---- tone, lens and screen-space effects

void GLTonemap(Texture2D* source, Texture2D* target, float exposure, float gamma, int curve)
{
    ShaderManager& shaders = Shaders();
    Shader* const byCurve[] = {shaders.ShaderTonemap, shaders.ShaderTonemapReinhard, shaders.ShaderTonemapUncharted2,
                               shaders.ShaderTonemapACES};
    FilterPass pass(byCurve[std::clamp(curve, 1, 4) - 1], {{"Image", source}}, target);
    float const inverse = 1.0f / std::max(gamma, 1e-3f);
    Shader::setUniform("InvGamma_Exposure", inverse, inverse, inverse, exposure);
    pass.draw();
}

void GLChroma(Texture2D* source, Texture2D* target, Vector4<float> const& chroma, float amount, Vector2<float> center)
{
    FilterPass pass(Shaders().ShaderFilterChroma, {{"Image", source}}, target);
    Shader::setUniform("chroma", chroma);
    Shader::setUniform("amount", amount);
    Shader::setUniform("center", center);
    pass.draw();
}

void GLFog(Texture2D* source, Texture2D* target, float near, float far, Vector4<float> const& colour, Texture2D* depth)
{
    FilterPass pass(Shaders().ShaderFogOrthogonal, {{"Image", source}, {"Depth", depth}}, target);
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("NearFar", near, far);
    Shader::setUniform("FogColor", colour);
    pass.draw();
}

void GLFog(Texture2D* source, Texture2D* target, Texture2D* range, Vector4<float> const& colour, Texture2D* depth)
{
    FilterPass pass(Shaders().ShaderFogRange, {{"Image", source}, {"Depth", depth}, {"Range", range}}, target);
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("FogColor", colour);
    pass.draw();
}

void GLFogOver(Texture2D* range, Vector4<float> const& colour, Texture2D* depth, Texture2D* target)
{
    SavedBlend saved;
    SavedBlend::setOver();
    FilterPass pass(Shaders().ShaderFogRangeOver, {{"Depth", depth}, {"Range", range}}, target);
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("FogColor", colour);
    pass.draw();
}

namespace {
// SSAO and SSSS: one loop, two programs.
void Gather(Shader* shader, Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* target, float radius,
            float strength, float time, int samples)
{
    FilterPass pass(shader, {{"Image", image}, {"Depth", depth}, {"Normal", normal}}, target);
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("PARAMETERS", float(std::max(samples, 1)), radius, strength);
    Shader::setUniform("Time", time);
    pass.draw();
}
} // namespace

namespace {
// The gathered target is a whole fraction of the depth's size.
int Reduction(Texture2D* depth, Texture2D* gathered)
{
    int const n = std::max(1, (depth->width() + gathered->width() - 1) / gathered->width());
    VEL_ASSERT_MSG((depth->width() + n - 1) / n == gathered->width() && (depth->height() + n - 1) / n == gathered->height(),
                   "a gathered target is the depth's size divided by a whole number, rounded up");
    return n;
}

void GatherReduced(Shader* shader, Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* gathered,
                   float radius, float time, int samples)
{
    FilterPass pass(shader, {{"Image", image}, {"Depth", depth}, {"Normal", normal}}, gathered);
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("PARAMETERS", float(std::max(samples, 1)), radius, 0.0f);
    Shader::setUniform("Time", time);
    Shader::setUniform("Reduction", Reduction(depth, gathered));
    pass.draw();
}

void Apply(Shader* shader, Texture2D* depth, Texture2D* gathered, Texture2D* target, float strength)
{
    FilterPass pass(shader, {{"Depth", depth}, {"Gathered", gathered}}, target);
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("PARAMETERS", 0.0f, 0.0f, strength);
    Shader::setUniform("Reduction", Reduction(depth, gathered));
    pass.draw();
}
} // namespace

void GLSSAOGather(Texture2D* depth, Texture2D* normal, Texture2D* gathered, float radius, float time, int samples)
{
    // The occlusion needs no colour: the normals stand in for the unread picture.
    GatherReduced(Shaders().ShaderSSAOGather, normal, depth, normal, gathered, radius, time, samples);
}

void GLSSSSGather(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* gathered, float radius, float time,
                  int samples)
{
    GatherReduced(Shaders().ShaderSSSSGather, image, depth, normal, gathered, radius, time, samples);
}

void GLSSAOApply(Texture2D* depth, Texture2D* gathered, Texture2D* target, float strength)
{
    SavedBlend saved;
    SavedBlend::setMultiply();
    Apply(Shaders().ShaderSSAOApply, depth, gathered, target, strength);
}

void GLSSSSApply(Texture2D* depth, Texture2D* gathered, Texture2D* target, float strength)
{
    SavedBlend saved;
    SavedBlend::setAdd(true);
    Apply(Shaders().ShaderSSSSApply, depth, gathered, target, strength);
}

void GLSSAO(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* target, float radius, float strength,
            float time, int samples)
{
    Gather(Shaders().ShaderSSAO, image, depth, normal, target, radius, strength, time, samples);
}

void GLSSSS(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* target, float radius, float strength,
            float time, int samples)
{
    Gather(Shaders().ShaderSSSS, image, depth, normal, target, radius, strength, time, samples);
}

void GLSSR(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* roughMetal, Texture2D* target, int rays,
           float roughness, int frame)
{
    // Without a material texture the program still has a sampler to bind: the normals stand in.
    FilterPass pass(Shaders().ShaderSSR,
                    {{"iImage", image}, {"iDepth", depth}, {"iNormal", normal}, {"iRoughMetal", roughMetal ? roughMetal : normal}},
                    target);
    int const frameAndMaterial[2] = {frame, roughMetal ? 1 : 0};
    Shader::setUniformArray("iFrame", 2, frameAndMaterial, 1);
    Shader::setUniform("iResolution", float(depth->width()), float(depth->height()));
    Shader::setUniform("iScreenToView", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("iViewToScreen", Matrix4<float>(Shader::ProjectionMatrix));
    Shader::setUniform("iRoughness", roughness);
    Shader::setUniform("iRays", std::clamp(rays, 1, 64));
    pass.draw();
}

namespace {
// The summaries of `tiles` by `summary` from `ids` and `second` (the flags or the normals;
// none for ids alone), then their mask by `mask`. Defined with the other passes that bind
// framebuffers, below.
void MarkTiles(Shader* summary, Shader* mask, Texture2D* ids, std::pair<char const*, Texture2D*> second,
               EdgeTiles& tiles, float limit);

// The draw of the last edge or contour pass, whose vertex stage (EdgeTileQuads) makes quads of
// the tiles that the mask of `tiles` marks.
void DrawMarkedTiles(EdgeTiles const& tiles, Texture2D* target)
{
    Shader::setUniform("size", float(target->width()), float(target->height()));
    if (gl_Cull_Face.value)
        gl_Cull_Face.set(false);
    glDrawArrays(GL_TRIANGLES, 0, 6 * tiles.Mask->width * tiles.Mask->height);
}

// Leaves alpha as it is while it lives: the passes that draw over a picture in place keep the
// picture's alpha without reading it.
class KeepAlpha {
public:
    KeepAlpha()
    {
        glGetBooleanv(GL_COLOR_WRITEMASK, mask);
        glColorMask(mask[0], mask[1], mask[2], GL_FALSE);
    }
    ~KeepAlpha() { glColorMask(mask[0], mask[1], mask[2], mask[3]); }
    KeepAlpha(KeepAlpha const&) = delete;
    KeepAlpha& operator=(KeepAlpha const&) = delete;

private:
    GLboolean mask[4] = {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};
};
} // namespace

void GLEdgeDetection(Texture2D* image, Texture2D* ids, Texture2D* normal, EdgeTiles& tiles, Texture2D* target,
                     float limit, bool idsOnly)
{
    ShaderManager& s = Shaders();
    if (image != target)
        GLCopy(image, target);
    if (idsOnly)
        MarkTiles(s.ShaderSimpleEdgeTiles, s.ShaderSimpleEdgeTileMask, ids, {nullptr, nullptr}, tiles, limit);
    else
        MarkTiles(s.ShaderEdgeTiles, s.ShaderEdgeTileMask, ids, {"Normal", normal}, tiles, limit);
    KeepAlpha keep;
    FilterPass pass(idsOnly ? s.ShaderSimpleEdgeDetection : s.ShaderEdgeDetection,
                    {{"IDs", ids}, {"Normal", normal}, {"Mask", tiles.Mask->color(0)}}, target);
    Shader::setUniform("limit", limit);
    DrawMarkedTiles(tiles, target);
}

void GLContour(Texture2D* image, Texture2D* ids, Texture2D* flags, EdgeTiles& tiles, Texture2D* target, float width,
               Vector4<float> const& colour, bool wire)
{
    ShaderManager& s = Shaders();
    if (image != target)
        GLCopy(image, target);
    MarkTiles(s.ShaderContourTiles, s.ShaderContourTileMask, ids, {"Flags", flags}, tiles, 0.0f);
    KeepAlpha keep;
    FilterPass pass(wire ? s.ShaderContourWire : s.ShaderContour,
                    {{"IDs", ids}, {"Flags", flags}, {"Mask", tiles.Mask->color(0)}}, target);
    Shader::setUniform("width", width);
    Shader::setUniform("ContourColor", colour);
    DrawMarkedTiles(tiles, target);
}

namespace {
void DepthOfField(Shader* shader, std::vector<Texture2D*> const& levels, Texture2D* depth, Texture2D* target,
                  float focus, float size)
{
    VEL_ASSERT_MSG(levels.size() == 5, "depth of field blends five levels of blur");
    BindDrawBuffer(target);
    GLMachine m;
    m.add(shader);
    for (Texture2D* level : levels)
        m.add(level);
    m.add(depth);
    VEL_ASSERT(m.enable());
    int units[5];
    for (size_t i = 0; i < 5; ++i)
        units[i] = levels[i]->activeTexture();
    Shader::setUniformArray("Opaques", 1, units, 5);
    Shader::setUniform("Depth", depth->activeTexture());
    Shader::setUniform("ProjectionMatrixInv", Matrix4<float>(Shader::ProjectionMatrixInv));
    Shader::setUniform("Focus", focus);
    Shader::setUniform("size", size);
    GLFill();
}
} // namespace

void GLDepthOfField(std::vector<Texture2D*> const& levels, Texture2D* depth, Texture2D* target, float focus, float size)
{
    DepthOfField(Shaders().ShaderFilterDepthOfField, levels, depth, target, focus, size);
}

void GLDepthOfFieldOver(std::vector<Texture2D*> const& blurred, Texture2D* depth, Texture2D* target, float focus,
                        float size)
{
    VEL_ASSERT_MSG(blurred.size() == 4, "depth of field blends four blurred levels over the picture");
    SavedBlend saved;
    SavedBlend::setOver();
    // The picture's slot holds a blurred level: the program does not read it, and the target
    // must not be bound for sampling.
    DepthOfField(Shaders().ShaderFilterDepthOfFieldOver, {blurred[0], blurred[0], blurred[1], blurred[2], blurred[3]},
                 depth, target, focus, size);
}

// ---- range by reduction

std::deque<Shared<FBOTexture>> MinMaxChain(int width, int height)
{
    std::deque<Shared<FBOTexture>> chain;
    do {
        width = std::max(width >> 1, 1);
        height = std::max(height >> 1, 1);
        Shared<Texture2D> texture(new Texture2D(width, height, GL_RG32F, GL_RG, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST));
        chain.emplace_back(new FBOTexture(texture));
    } while (width > 1 || height > 1);
    return chain;
}

Vector2<float> GLMinMax(Texture2D* source)
{
    std::deque<Shared<FBOTexture>> owned = MinMaxChain(source->width(), source->height());
    std::deque<FBOTexture*> chain;
    for (auto const& target : owned)
        chain.push_back(target.get());
    return GLMinMax(source, chain);
}

namespace {
// The passes of the reduction; the last target stays bound.
void Reduce(Texture2D* source, std::deque<FBOTexture*> const& chain)
{
    VEL_ASSERT_MSG(!chain.empty() && chain.back()->width == 1 && chain.back()->height == 1,
                   "GLMinMax needs the chain of MinMaxChain, down to 1 x 1");
    bool const depth = source->format == GL_DEPTH_COMPONENT || source->format == GL_DEPTH_STENCIL;

    Texture2D* last = source;
    for (size_t i = 0; i < chain.size(); ++i) {
        FBOTexture* target = chain[i];
        VEL_ASSERT_MSG(target->width == std::max(last->width() >> 1, 1) && target->height == std::max(last->height() >> 1, 1),
                       "each target of the chain is half the size of the one before");
        VEL_ASSERT(target->enable());
        glViewport(0, 0, target->width, target->height);
        if (i == 0) {
            FilterPass pass(Shaders().ShaderFilterMinMaxDepthOnly, {{"Image", last}}, target->texture());
            Shader::setUniform("background", depth ? 1.0f : 3.0e38f);
            pass.draw();
        } else {
            FilterPass(Shaders().ShaderFilterMinMax, {{"Image", last}}, target->texture()).draw();
        }
        last = target->texture();
    }
}

// Gives back the framebuffers and viewport of its construction.
class KeepBindings {
public:
    KeepBindings() { glGetIntegerv(GL_VIEWPORT, viewport); }
    ~KeepBindings()
    {
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawn);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, read);
        FBO::DRAW_ID = drawn;
        FBO::READ_ID = read;
    }
    KeepBindings(KeepBindings const&) = delete;
    KeepBindings& operator=(KeepBindings const&) = delete;

private:
    int viewport[4] = {0, 0, 0, 0};
    unsigned const drawn = FBO::DRAW_ID, read = FBO::READ_ID;
};
} // namespace

// ---- tiles of the edge and contour passes

namespace {
void MarkTiles(Shader* summary, Shader* mask, Texture2D* ids, std::pair<char const*, Texture2D*> second,
               EdgeTiles& tiles, float limit)
{
    VEL_ASSERT_MSG(tiles.Mask->width == EdgeTiles::tiles(ids->width()) &&
                       tiles.Mask->height == EdgeTiles::tiles(ids->height()),
                   "the edge tiles are made for the picture's size");
    KeepBindings keep;
    FBO& summaries = *tiles.Summary;
    VEL_ASSERT(summaries.enableDraw());
    glViewport(0, 0, summaries.width, summaries.height);
    // The normals' cone and lengths go to targets 1 and 2; ids and flags need the first alone.
    GLenum const buffers[3] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2};
    glDrawBuffers(summary == Shaders().ShaderEdgeTiles ? 3 : 1, buffers);
    {
        GLMachine m{summary, ids};
        if (second.second)
            m.add(second.second);
        VEL_ASSERT(m.enable());
        Shader::setUniform("IDs", ids->activeTexture());
        if (second.second)
            Shader::setUniform(second.first, second.second->activeTexture());
        GLFill();
    }
    VEL_ASSERT(tiles.Mask->enableDraw());
    glViewport(0, 0, tiles.Mask->width, tiles.Mask->height);
    FilterPass pass(mask, {{"Ids", summaries.color(0)}, {"Cone", summaries.color(1)}, {"Length", summaries.color(2)}},
                    tiles.Mask->color(0));
    Shader::setUniform("limit", limit);
    pass.draw();
}
} // namespace

void GLMinMaxReduce(Texture2D* source, std::deque<FBOTexture*> const& chain)
{
    KeepBindings keep;
    Reduce(source, chain);
}

Vector2<float> GLMinMax(Texture2D* source, std::deque<FBOTexture*> const& chain)
{
    KeepBindings keep;
    Reduce(source, chain);
    float range[2] = {0, 0};
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glReadPixels(0, 0, 1, 1, GL_RG, GL_FLOAT, range);
    return {range[0], range[1]};
}

} // namespace vel
