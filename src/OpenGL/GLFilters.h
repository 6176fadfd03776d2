// The filter family: full-screen passes from source textures into a target texture, for the
// frame's screen effects, the tool box thumbnails and shader passes alike.
//
// Every filter draws the attributeless quad of GLFill() over the viewport the caller set, into
// the framebuffer the caller bound for drawing; it binds the draw buffer of the target's
// attachment (GL_COLOR_ATTACHMENT0 when the target is null). Sources are sampled by normalised
// coordinates, so they may differ in size from the target, except where a filter says it works
// texel for texel. Shader and sources go through one GLMachine per call (asserted "m.enable()").
// Only GLMinMax and the tile passes of GLEdgeDetection and GLContour bind framebuffers and set
// the viewport themselves, and they restore both.
//
// Index (GLFilters.cpp): copies and point-wise filters; sums; neighbourhood filters; tone,
// lens and screen-space effects; range by reduction.
#pragma once

#include "Math/Matrix4.h"
#include "Math/Vector2.h"
#include "Math/Vector4.h"
#include "Memory/Shared.h"

#include <deque>
#include <vector>

namespace vel {

class EdgeTiles;
class FBOTexture;
class Texture2D;

// Level 0 of `source`; GREY_MAX: the largest of r, g, b in each of them, alpha kept.
void GLCopy(Texture2D* source, Texture2D* target);
void GLCopyGreyMax(Texture2D* source, Texture2D* target);
// `source` upside down.
void GLMirrorVertical(Texture2D* source, Texture2D* target);
// `source` clamped to 0..1.
void GLClamp(Texture2D* source, Texture2D* target);
// `source` times `factor`, channel by channel; and the product of two textures.
void GLMul(Texture2D* source, Vector4<float> factor, Texture2D* target);
void GLMul(Texture2D* a, Texture2D* b, Texture2D* target);
// `source` plus `addend`; and a + factor * b.
void GLAdd(Texture2D* source, Vector4<float> addend, Texture2D* target);
void GLAdd(Texture2D* a, Texture2D* b, float factor, Texture2D* target);
// The sum of `sources` (one or more): up to five in one pass, more in further passes blended
// additively onto the first. With `accumulate` the sum is added to what the target holds.
// The blending state is restored.
void GLAdd(std::vector<Texture2D*> const& sources, Texture2D* target, bool accumulate);
// The sum of the mip levels 0 to `level` of every source (two a pass, further passes blended
// additively). The sources' mipmaps must be made first.
void GLAddMipMaps(std::vector<Texture2D*> const& sources, int level, Texture2D* target);
// `source` times `factor` added to what `target` holds, in place by blending; the blending
// state is restored.
void GLAddScaled(Texture2D* source, float factor, Texture2D* target);
// mix(a, b, factor).
void GLMix(Texture2D* a, Texture2D* b, float factor, Texture2D* target);
// Per pixel the picture whose depth is nearer (smaller); `factor` is how much of the farther
// one shows through (0: none).
void GLMixDepth(Texture2D* a, Texture2D* depthA, Texture2D* b, Texture2D* depthB, float factor, Texture2D* target);
// The pixels whose brightest channel is above `threshold`, the rest black; ThresholdMul scales
// what is kept by `factor` (the bloom source).
void GLThreshold(Texture2D* source, float threshold, Texture2D* target);
void GLThresholdMul(Texture2D* source, float threshold, float factor, Texture2D* target);
// Per channel the median of the (2 size + 1)^2 window, size 0 to 2; texel for texel.
void GLMedian(Texture2D* source, Texture2D* target, int size);
// A separable blur done in place: `count` rounds, each along x from `source` into `target`, then
// along y from `target` back into `source`. Both are attachments of the bound framebuffer, of one
// size; the blurred picture ends in `source`. `simple` takes three taps instead of five.
void GLBlur(Texture2D* source, Texture2D* target, int count, bool simple);
// One pass of a Gaussian of `sigma` texels over `radius` texels each way (at most 8).
void GLGaussianBlur(Texture2D* source, Texture2D* target, float sigma, int radius);
// xyz to unit length (zero stays zero), w kept.
void GLNormalize(Texture2D* source, Texture2D* target);
// View-space normals from `depth`, with `matrix` the inverse projection; w comes from `flags`
// (the flag word a fast render writes alone). Texel for texel.
void GLNormals(Texture2D* depth, Texture2D* flags, Texture2D* target, Matrix4<float> const& matrix);
// Film grain of amplitude `strength` that changes with `frame`; a zero strength copies.
void GLNoise(Texture2D* source, Texture2D* target, int frame, float strength);

// ---- tone, lens and screen-space effects
// `source` times `exposure`, through the tone curve of Rendering's tonemap value `curve` (1 none,
// 2 REINHARD, 3 UNCHARTED2, 4 ACES), then to the power 1 / `gamma`; alpha kept.
void GLTonemap(Texture2D* source, Texture2D* target, float exposure, float gamma, int curve);
// Chromatic aberration of a lens: channel c of each pixel mixes `source` there and at the point
// moved away from `center` (texture coordinates) by `amount` of its distance from it, by
// chroma[c].
void GLChroma(Texture2D* source, Texture2D* target, Vector4<float> const& chroma, float amount, Vector2<float> center);
// The passes below read `depth` texel for texel at the target's size, and take view positions
// through Shader::ProjectionMatrixInv, the frame's inverse projection. Pixels of the background
// (depth 1) keep their colour.
// Fog: from eye distance `near` to `far`, the picture turns towards colour.rgb, up to colour.a.
void GLFog(Texture2D* source, Texture2D* target, float near, float far, Vector4<float> const& colour, Texture2D* depth);
// The same over the range of depths in `range`, the 1 x 1 end of a GLMinMaxReduce, read on the
// GPU: no read-back.
void GLFog(Texture2D* source, Texture2D* target, Texture2D* range, Vector4<float> const& colour, Texture2D* depth);
// The same blended over `target` in place: it reads no picture.
void GLFogOver(Texture2D* range, Vector4<float> const& colour, Texture2D* depth, Texture2D* target);
// Ambient occlusion and subsurface light of `samples` samples within `radius` (a fraction of
// the picture's height) around each pixel, with `normal` the unit view normals; `time` moves
// the noise of the sampling pattern. A zero strength gives the picture back.
void GLSSAO(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* target, float radius, float strength,
            float time, int samples);
void GLSSSS(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* target, float radius, float strength,
            float time, int samples);
// The same at reduced cost, in two passes. Gather, into `gathered`, a target of 1 / n of the
// depth's size each way (n a whole number; the caller binds its framebuffer): the occlusion (r)
// or the mean gathered colour (rgb) of the depth texel at n times each pixel, and that texel's
// view depth (a). Apply, at the depth's size, blended over `target`, which holds the picture:
// the picture times 1 - strength * occlusion, or plus strength times the gathered colour, each
// pixel taking the four nearest gathered texels weighted by how near their depth is to its own.
// Apply reads no picture, so the frame runs it in place, and its depth test spares the
// background; blending state is restored.
void GLSSAOGather(Texture2D* depth, Texture2D* normal, Texture2D* gathered, float radius, float time, int samples);
void GLSSSSGather(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* gathered, float radius, float time,
                  int samples);
void GLSSAOApply(Texture2D* depth, Texture2D* gathered, Texture2D* target, float strength);
void GLSSSSApply(Texture2D* depth, Texture2D* gathered, Texture2D* target, float strength);
// The reflected light of `rays` rays a pixel (to be added to the picture), at any target size;
// the roughness comes from `roughMetal` when it is given, else it is `roughness`. `frame`
// changes the jitter of the rays.
void GLSSR(Texture2D* image, Texture2D* depth, Texture2D* normal, Texture2D* roughMetal, Texture2D* target, int rays,
           float roughness, int frame);
// The two below change few pixels. They write only those, over a copy of `image` in `target`,
// or in place when `target` is `image` (then they sample no picture at all); alpha is kept. A
// pass into `tiles` (of the picture's size; it binds their framebuffers and gives the caller's
// back, with the viewport) first finds the tiles where nothing can change. Texel for texel.
// Black edges where the object id of `ids` changes between neighbours or, unless `idsOnly`, the
// normals turn by more than the angle whose cosine is `limit`.
void GLEdgeDetection(Texture2D* image, Texture2D* ids, Texture2D* normal, EdgeTiles& tiles, Texture2D* target,
                     float limit, bool idsOnly);
// Outlines `width` pixels wide (at most 4), in `colour`, around the objects whose flags (the w
// of `flags`) ask for contours; `wire` for wireframe pictures.
void GLContour(Texture2D* image, Texture2D* ids, Texture2D* flags, EdgeTiles& tiles, Texture2D* target, float width,
               Vector4<float> const& colour, bool wire);
// Depth of field: per pixel a mix of `levels` (five: the picture, then ever more blurred
// copies) by `size` times the pixel's distance from the eye distance `focus`, relative to it.
void GLDepthOfField(std::vector<Texture2D*> const& levels, Texture2D* depth, Texture2D* target, float focus, float size);
// The same blended over `target`, which holds the picture and is not read: `blurred` are the
// four blurred levels. Blending state is restored.
void GLDepthOfFieldOver(std::vector<Texture2D*> const& blurred, Texture2D* depth, Texture2D* target, float focus,
                        float size);

// The range (min, max) of the first channel of `source`, by repeated halving on the GPU and one
// read-back of a single texel. A depth texture's background (1) is not counted; when nothing is
// counted, min > max. The first form makes its own chain of targets; the second runs down
// `chain`, the targets of MinMaxChain for the source's size, in order (the frame keeps one and
// makes no texture while drawing).
Vector2<float> GLMinMax(Texture2D* source);
Vector2<float> GLMinMax(Texture2D* source, std::deque<FBOTexture*> const& chain);
// The reduction alone, without the read-back: the range ends in chain.back() (min in r, max in
// g), for a pass that reads it on the GPU. Framebuffer bindings and viewport are restored.
void GLMinMaxReduce(Texture2D* source, std::deque<FBOTexture*> const& chain);
// The targets of a reduction of a width x height texture: RG32F, each half the last (at least
// 1 each way), down to 1 x 1; at least one.
std::deque<Shared<FBOTexture>> MinMaxChain(int width, int height);

} // namespace vel
