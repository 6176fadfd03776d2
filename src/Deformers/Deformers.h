// Deformers: the CPU forms of the sculpt steps, the twins of the clay shaders, for the kinds
// that sculpt on the CPU (Mesh, Curve). Each works on plain arrays: `count` positions read,
// and a per-vertex sum (displacements, or selection weights for the paint forms) that the
// caller zeroes before a step; every symmetric sculptor adds into the same sum, as the
// additive blending of the GPU path does. Formulas follow the shaders term for term, in float.
//
// Index
// - falloff and sums
// - transforms from the stroke's start (move ... swirl)
// - brushes (deform ... twist, smooth)
// - selection (paint, gradient, fill)
// - one prepared step
#pragma once

#include <functional>
#include <vector>

#include "Deformers/SculptStep.h"
#include "Math/Matrix3.h"
#include "Math/Vector3.h"

namespace vel {

using SculptVec = Vector3<float>;

// ---- falloff and sums -------------------------------------------------------------------

// 1 up to r = falloff, 0 from r = 1 on, t^2 (3 - 2t) between; falloff 1 is a hard edge.
float SculptFalloff(float r, float falloff);

// ---- transforms from the stroke's start -------------------------------------------------

void SculptMove(int count, SculptVec* sum, std::vector<SculptVec> const& deltas);
// `rotations` are full rotations (not minus the identity) about each centre.
void SculptRotate(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                  std::vector<Matrix3<float>> const& rotations);
void SculptScaleUniform(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                        std::vector<float> const& factors);
// Scale along the unit `axes` by `factors`.
void SculptScale(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                 std::vector<SculptVec> const& axes, std::vector<float> const& factors);
void SculptSkew(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                std::vector<SculptVec> const& axes, std::vector<SculptVec> const& modifs);
void SculptBend(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                std::vector<SculptVec> const& axes, std::vector<SculptVec> const& modifs, std::vector<float> const& R);
void SculptTaper(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                 std::vector<SculptVec> const& axes, std::vector<SculptVec> const& modifs);
// Turns the two other coordinates by angle * the coordinate along `axis` (0 x, 1 y, 2 z).
void SculptSwirl(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                 std::vector<float> const& angles, int axis);

// ---- brushes ----------------------------------------------------------------------------

void SculptDeform(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                  std::vector<SculptVec> const& displacements, float radius, float falloff);
void SculptDeformVolume(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                        std::vector<Matrix3<float>> const& frames, float weight, float radius);
// Material up to `height` above the brush plane; `add` false pushes against the normal.
void SculptAddSub(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                  std::vector<SculptVec> const& normals, float radius, float falloff, float strength, float height,
                  bool add);
// Along a stroke: `frames` are SculptStrokeFrame's (x the direction, z the normal).
void SculptAddSubDir(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                     std::vector<Matrix3<float>> const& frames, std::vector<SculptVec> const& normals, float radius,
                     float falloff, float strength, float height, bool add);
void SculptCreaseDir(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                     std::vector<Matrix3<float>> const& frames, std::vector<SculptVec> const& normals, float radius,
                     float falloff, float strength, bool add);

// The stamp's alpha image, row after row from the bottom, values 0..1, sampled at the
// nearest texel with the edge repeated (a texture with GL_CLAMP_TO_EDGE).
struct StampAlpha {
    int width = 0;
    int height = 0;
    float const* values = nullptr;
};
// `directions` the stamp's half extent per sculptor (halved already for stamps by their
// ends), `frames` SculptStrokeFrame's of them (y negated for a mirrored copy).
void SculptAddSubStamp(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                       std::vector<SculptVec> const& directions, std::vector<Matrix3<float>> const& frames,
                       std::vector<SculptVec> const& normals, float strength, bool add, StampAlpha const& alpha);
// Pulls towards the centre; a negative intensity pushes away (grow).
void SculptPinch(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                 float intensity, float radius);
void SculptTwist(int count, SculptVec const* p, SculptVec* sum, std::vector<SculptVec> const& centers,
                 std::vector<SculptVec> const& axes, float cosA, float sinA, float radius);

// Moves each vertex towards T::PointSculptSmooth(i) by (1 - |p|^2)^2 * intensity; what the
// element keeps in place (anchors, crowded sharp vertices) gets nothing.
template <class T>
void SculptSmooth(int count, SculptVec const* p, SculptVec* sum, T const& element,
                  std::vector<SculptVec> const& centers, float intensity, float radius)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    for (SculptVec const& c : centers)
        for (int i = 0; i < count; ++i) {
            SculptVec q = (p[i] - c) * iradius;
            float d = q.dot(q);
            if (d >= 1.0f)
                continue;
            SculptVec target = element.PointSculptSmooth(i);
            if (target == p[i])
                continue;
            float r = (1.0f - d) * (1.0f - d) * intensity;
            sum[i] += (target - p[i]) * r;
        }
}

// ---- selection --------------------------------------------------------------------------

void SculptPaintSelect(int count, SculptVec const* p, float* weights, std::vector<SculptVec> const& centers,
                       float radius, float falloff, float strength);
// `directions` divided by their squared length (SculptStep::axes).
void SculptGradientSelect(int count, SculptVec const* p, float* weights, std::vector<SculptVec> const& centers,
                          std::vector<SculptVec> const& directions, float strength);

// ---- one prepared step ------------------------------------------------------------------

// What a step produced.
enum class SculptOutput { NOTHING, DEFORMATIONS, WEIGHTS };

// Runs `step` on `count` positions: displacements into `sum` or selection weights into
// `weights` (both zeroed by the caller; either may be null when the step cannot need it).
// Smooth reads `smoothTarget(i)`; a stamp reads `stamp` and does nothing without one. The
// positions are the stroke's start for SculptAbsoluteAction, the current ones otherwise.
SculptOutput ApplySculptStep(SculptStep const& step, int count, SculptVec const* p, SculptVec* sum, float* weights,
                             std::function<SculptVec(int)> const& smoothTarget = {},
                             StampAlpha const* stamp = nullptr);

} // namespace vel
