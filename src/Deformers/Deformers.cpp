#include "Deformers/Deformers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vel {

using Vec = SculptVec;

namespace {

std::size_t Pairs(std::size_t a, std::size_t b)
{
    return std::min(a, b);
}

// GLSL's `v * m` for a mat3 uploaded from a row-major Matrix3: the dots with m's rows.
Vec Dots(Vec const& v, Matrix3<float> const& m)
{
    return {v.dot(m.row(0)), v.dot(m.row(1)), v.dot(m.row(2))};
}

} // namespace

// ---- falloff and sums -------------------------------------------------------------------

float SculptFalloff(float r, float falloff)
{
    if (r >= 1.0f)
        return 0.0f;
    if (falloff >= 1.0f)
        return 1.0f;
    float t = std::clamp((r - 1.0f) / (falloff - 1.0f), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// ---- transforms from the stroke's start -------------------------------------------------

void SculptMove(int count, Vec* sum, std::vector<Vec> const& deltas)
{
    Vec total;
    for (Vec const& d : deltas)
        total += d;
    for (int i = 0; i < count; ++i)
        sum[i] += total;
}

void SculptRotate(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                  std::vector<Matrix3<float>> const& rotations)
{
    for (std::size_t k = 0; k < Pairs(centers.size(), rotations.size()); ++k) {
        Matrix3<float> const& R = rotations[k];
        Matrix3<float> const D(R.row(0) - Vec(1, 0, 0), R.row(1) - Vec(0, 1, 0), R.row(2) - Vec(0, 0, 1));
        for (int i = 0; i < count; ++i)
            sum[i] += (p[i] - centers[k]) * D;
    }
}

void SculptScaleUniform(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                        std::vector<float> const& factors)
{
    for (std::size_t k = 0; k < Pairs(centers.size(), factors.size()); ++k) {
        float const s = factors[k] - 1.0f;
        for (int i = 0; i < count; ++i)
            sum[i] += (p[i] - centers[k]) * Vec(s, s, s);
    }
}

void SculptScale(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<Vec> const& axes,
                 std::vector<float> const& factors)
{
    // The skew of the axis onto itself, as the GPU path does it.
    std::vector<Vec> modifs;
    std::vector<Vec> units;
    for (std::size_t k = 0; k < Pairs(axes.size(), factors.size()); ++k) {
        units.push_back(axes[k].normalize());
        modifs.push_back(units.back() * (factors[k] - 1.0f));
    }
    SculptSkew(count, p, sum, centers, units, modifs);
}

void SculptSkew(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<Vec> const& axes,
                std::vector<Vec> const& modifs)
{
    for (std::size_t k = 0; k < Pairs(centers.size(), Pairs(axes.size(), modifs.size())); ++k)
        for (int i = 0; i < count; ++i)
            sum[i] += axes[k] * (p[i] - centers[k]).dot(modifs[k]);
}

void SculptBend(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<Vec> const& axes,
                std::vector<Vec> const& modifs, std::vector<float> const& R)
{
    std::size_t const n = Pairs(Pairs(centers.size(), R.size()), Pairs(axes.size(), modifs.size()));
    for (std::size_t k = 0; k < n; ++k) {
        if (R[k] == 0.0f)
            continue;
        for (int i = 0; i < count; ++i) {
            Vec q = p[i] - centers[k];
            float x = q.dot(axes[k]);
            float y = q.dot(modifs[k]);
            float r = y + R[k];
            float a = x / R[k];
            sum[i] += axes[k] * (r * std::sin(a) - x) + modifs[k] * (r * std::cos(a) - r);
        }
    }
}

void SculptTaper(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<Vec> const& axes,
                 std::vector<Vec> const& modifs)
{
    for (std::size_t k = 0; k < Pairs(centers.size(), Pairs(axes.size(), modifs.size())); ++k)
        for (int i = 0; i < count; ++i) {
            Vec q = p[i] - centers[k];
            sum[i] += modifs[k] * (q.dot(axes[k]) * q.dot(modifs[k]));
        }
}

void SculptSwirl(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<float> const& angles,
                 int axis)
{
    // The plane's two coordinates in the shaders' order: yz about x, zx about y, xy about z.
    int const u = (axis + 1) % 3, v = (axis + 2) % 3;
    for (std::size_t k = 0; k < Pairs(centers.size(), angles.size()); ++k)
        for (int i = 0; i < count; ++i) {
            Vec q = p[i] - centers[k];
            float a = angles[k] * q[axis];
            float c = std::cos(a) - 1.0f, s = std::sin(a);
            Vec d;
            d[u] = c * q[u] - s * q[v];
            d[v] = s * q[u] + c * q[v];
            sum[i] += d;
        }
}

// ---- brushes ----------------------------------------------------------------------------

void SculptDeform(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                  std::vector<Vec> const& displacements, float radius, float falloff)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    for (std::size_t k = 0; k < Pairs(centers.size(), displacements.size()); ++k)
        for (int i = 0; i < count; ++i) {
            float r = ((p[i] - centers[k]) * iradius).length();
            if (r < 1.0f)
                sum[i] += displacements[k] * SculptFalloff(r, falloff);
        }
}

void SculptDeformVolume(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                        std::vector<Matrix3<float>> const& frames, float weight, float radius)
{
    if (!(radius > 0.0f))
        return;
    float const iradius2 = 1.0f / (radius * radius);
    for (std::size_t k = 0; k < Pairs(centers.size(), frames.size()); ++k) {
        Vec const f0 = frames[k].row(0), f1 = frames[k].row(1), f2 = frames[k].row(2);
        for (int i = 0; i < count; ++i) {
            Vec x = p[i] - centers[k];
            float t2 = x.dot(x) * iradius2;
            if (t2 >= 1.0f)
                continue;
            float t = std::sqrt(t2);
            float a = 1.0f - t2 * t * (4.0f - 3.0f * t);
            float b = 12.0f * (t - t2) * iradius2;
            Vec longitudinal = f2 * a;
            Vec transverse0 = x.cross(f0) * x.dot(f1);
            Vec transverse1 = x.cross(f1) * x.dot(f0);
            sum[i] += (longitudinal + (transverse0 - transverse1) * b) * (weight * a);
        }
    }
}

void SculptAddSub(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<Vec> const& normals,
                  float radius, float falloff, float strength, float height, bool add)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    for (std::size_t k = 0; k < Pairs(centers.size(), normals.size()); ++k) {
        Vec n = normals[k].normalize();
        if (!add)
            n = -n;
        for (int i = 0; i < count; ++i) {
            Vec q = (p[i] - centers[k]) * iradius;
            if (q.dot(q) >= 1.0f)
                continue;
            float S = SculptFalloff(q.length(), falloff);
            sum[i] += n * (S * (radius * strength) * std::max(height - q.dot(n), 0.0f));
        }
    }
}

void SculptAddSubDir(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                     std::vector<Matrix3<float>> const& frames, std::vector<Vec> const& normals, float radius,
                     float falloff, float strength, float height, bool add)
{
    (void)falloff; // the box's sides have fixed softness, as in the shader
    if (!(radius > 0.0f))
        return;
    std::size_t const n = Pairs(centers.size(), Pairs(frames.size(), normals.size()));
    for (std::size_t k = 0; k < n; ++k) {
        Matrix3<float> const frame = frames[k] * (1.0f / radius);
        Vec const normal = normals[k].normalize() * (add ? radius * strength : -radius * strength);
        for (int i = 0; i < count; ++i) {
            Vec q = Dots(p[i] - centers[k], frame);
            // GLSL step(edge, x): 0 below the edge, 1 from it on.
            float sx = std::fabs(q.x) <= 1.0f ? 1.0f : 0.0f;
            float sy = std::fabs(q.y) <= 1.0f ? 1.0f : 0.0f;
            float sz = std::fabs(q.z) <= height ? 1.0f : 0.0f;
            float d = std::max(height * sx * sy - q.z, 0.0f);
            d *= SculptFalloff(std::fabs(q.x), 0.2f) * SculptFalloff(std::fabs(q.y), 0.7f) * sz;
            if (d != 0.0f)
                sum[i] += normal * d;
        }
    }
}

void SculptCreaseDir(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                     std::vector<Matrix3<float>> const& frames, std::vector<Vec> const& normals, float radius,
                     float falloff, float strength, bool add)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    std::size_t const n = Pairs(centers.size(), Pairs(frames.size(), normals.size()));
    for (std::size_t k = 0; k < n; ++k) {
        Vec const normal = normals[k].normalize() * (add ? radius * strength : -radius * strength);
        for (int i = 0; i < count; ++i) {
            Vec q = (p[i] - centers[k]) * iradius;
            if (q.dot(q) >= 1.0f)
                continue;
            Vec f = Dots(q, frames[k]);
            float across = 1.0f - std::fabs(f.y);
            across *= across;
            across *= across;
            across *= across;
            sum[i] += normal * (SculptFalloff(q.length(), falloff) * SculptFalloff(std::fabs(f.x), 0.0f) * across);
        }
    }
}

namespace {

float Sample(StampAlpha const& alpha, float u, float v)
{
    int x = std::clamp(int(std::floor(u * float(alpha.width))), 0, alpha.width - 1);
    int y = std::clamp(int(std::floor(v * float(alpha.height))), 0, alpha.height - 1);
    return alpha.values[std::size_t(y) * std::size_t(alpha.width) + std::size_t(x)];
}

} // namespace

void SculptAddSubStamp(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers,
                       std::vector<Vec> const& directions, std::vector<Matrix3<float>> const& frames,
                       std::vector<Vec> const& normals, float strength, bool add, StampAlpha const& alpha)
{
    std::size_t const n = Pairs(Pairs(centers.size(), directions.size()), Pairs(frames.size(), normals.size()));
    if (n == 0 || alpha.width <= 0 || alpha.height <= 0 || !alpha.values || directions[0].length2() == 0.0f)
        return;
    float const w = float(alpha.width), h = float(alpha.height), side = std::max(w, h);
    float const ratioX = side / w * 0.707f, ratioY = side / h * 0.707f;
    for (std::size_t k = 0; k < n; ++k) {
        float const radius = directions[k].length() * 1.4142f;
        if (!(radius > 0.0f))
            continue;
        float const iradius = 1.0f / radius;
        Vec const normal = normals[k].normalize() * (add ? radius * strength : -radius * strength);
        for (int i = 0; i < count; ++i) {
            Vec q = (p[i] - centers[k]) * iradius;
            if (q.dot(q) > 1.0f)
                continue;
            Vec f = Dots(q, frames[k]);
            if (!(std::fabs(f.x) < 0.707f && std::fabs(f.y) < 0.707f))
                continue;
            float r = Sample(alpha, ratioX * f.x + 0.5f, ratioY * f.y + 0.5f);
            sum[i] += normal * r;
        }
    }
}

void SculptPinch(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, float intensity, float radius)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    for (Vec const& c : centers)
        for (int i = 0; i < count; ++i) {
            Vec d = p[i] - c;
            Vec q = d * iradius;
            float qq = q.dot(q);
            if (qq >= 1.0f)
                continue;
            float r = 1.0f - qq;
            sum[i] += d * (-r * r * intensity);
        }
}

void SculptTwist(int count, Vec const* p, Vec* sum, std::vector<Vec> const& centers, std::vector<Vec> const& axes,
                 float cosA, float sinA, float radius)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    for (std::size_t k = 0; k < Pairs(centers.size(), axes.size()); ++k) {
        Vec const axis = axes[k].normalize();
        for (int i = 0; i < count; ++i) {
            Vec d = p[i] - centers[k];
            Vec q = d * iradius;
            float qq = q.dot(q);
            if (qq >= 1.0f)
                continue;
            float r = (1.0f - qq) * (1.0f - qq);
            Vec x = d - axis * d.dot(axis);
            sum[i] += (x * (cosA - 1.0f) + axis.cross(x) * sinA) * r;
        }
    }
}

// ---- selection --------------------------------------------------------------------------

void SculptPaintSelect(int count, Vec const* p, float* weights, std::vector<Vec> const& centers, float radius,
                       float falloff, float strength)
{
    if (!(radius > 0.0f))
        return;
    float const iradius = 1.0f / radius;
    for (Vec const& c : centers)
        for (int i = 0; i < count; ++i) {
            float r = ((p[i] - c) * iradius).length();
            if (r < 1.0f)
                weights[i] += strength * SculptFalloff(r, falloff);
        }
}

void SculptGradientSelect(int count, Vec const* p, float* weights, std::vector<Vec> const& centers,
                          std::vector<Vec> const& directions, float strength)
{
    for (std::size_t k = 0; k < Pairs(centers.size(), directions.size()); ++k)
        for (int i = 0; i < count; ++i)
            weights[i] += strength * (1.0f - std::clamp((p[i] - centers[k]).dot(directions[k]), 0.0f, 1.0f));
}

// ---- one prepared step ------------------------------------------------------------------

namespace {

struct SmoothTargets {
    std::function<Vec(int)> const& target;
    Vec PointSculptSmooth(int i) const { return target(i); }
};

} // namespace

SculptOutput ApplySculptStep(SculptStep const& s, int count, Vec const* p, Vec* sum, float* weights,
                             std::function<Vec(int)> const& smoothTarget, StampAlpha const* stamp)
{
    if (s.skip || count <= 0)
        return SculptOutput::NOTHING;
    bool const paint = SculptPaintAction(s.action);
    if (paint ? !weights : !sum)
        return SculptOutput::NOTHING;
    switch (s.action) {
    case 1: SculptMove(count, sum, s.axes); break;
    case 3: SculptRotate(count, p, sum, s.centers, s.frames); break;
    case 5: SculptScaleUniform(count, p, sum, s.centers, s.factors); break;
    case 9: SculptScale(count, p, sum, s.centers, s.axes, s.factors); break;
    case 12: SculptSkew(count, p, sum, s.centers, s.axes, s.modifs); break;
    case 13: SculptBend(count, p, sum, s.centers, s.axes, s.modifs, s.factors); break;
    case 14: SculptTaper(count, p, sum, s.centers, s.axes, s.modifs); break;
    case 16: SculptSwirl(count, p, sum, s.centers, s.factors, s.swirlAxis); break;
    case 17: case 18:
        SculptAddSubDir(count, p, sum, s.centers, s.frames, s.thirds, s.radius, s.falloff, s.strength, s.height, s.add);
        break;
    case 19: case 20:
        SculptCreaseDir(count, p, sum, s.centers, s.frames, s.thirds, s.radius, s.falloff, s.strength, s.add);
        break;
    case 21: case 22: case 23: case 24:
        if (!stamp)
            return SculptOutput::NOTHING;
        SculptAddSubStamp(count, p, sum, s.centers, s.seconds, s.frames, s.thirds, s.strength, s.add, *stamp);
        break;
    case 25: case 26: case 27: case 28:
        SculptAddSub(count, p, sum, s.centers, s.thirds, s.radius, s.falloff, s.strength, s.height, s.add);
        break;
    case 29: SculptDeform(count, p, sum, s.centers, s.seconds, s.radius, s.falloff); break;
    case 30: SculptDeformVolume(count, p, sum, s.centers, s.frames, s.weight, s.radius); break;
    case 32:
        if (!smoothTarget)
            return SculptOutput::NOTHING;
        SculptSmooth(count, p, sum, SmoothTargets{smoothTarget}, s.centers, s.intensity, s.radius);
        break;
    case 36: case 37: SculptPinch(count, p, sum, s.centers, s.intensity, s.radius); break;
    case 38: SculptTwist(count, p, sum, s.centers, s.seconds, s.cosA, s.sinA, s.radius); break;
    case 39:
        SculptAddSub(count, p, sum, s.centers, s.thirds, s.radius, s.falloff, s.strength, s.height, false);
        break;
    case 33: // smooth paint selects like paint; the caller smooths the materials by the weights
    case 41: case 44: case 47:
        SculptPaintSelect(count, p, weights, s.centers, s.radius, s.falloff, s.strength);
        break;
    case 42: case 45: case 48: SculptGradientSelect(count, p, weights, s.centers, s.axes, s.strength); break;
    case 43: case 46: case 49:
        for (int i = 0; i < count; ++i)
            weights[i] += s.strength;
        break;
    default:
        return SculptOutput::NOTHING;
    }
    return paint ? SculptOutput::WEIGHTS : SculptOutput::DEFORMATIONS;
}

} // namespace vel
