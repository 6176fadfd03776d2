#include "Scene/Tools/SDFTool/SDFObj.h"

#include "Scene/IFile.h"
#include "Scene/OFile.h"

#include <algorithm>
#include <cmath>

namespace vel {

namespace {

constexpr double PI = 3.14159265358979323846;

AABB Box(double x, double y, double z)
{
    AABB box;
    box.min = {-x, -y, -z};
    box.max = {x, y, z};
    return box;
}

// Reads a run of fields; the caller stops at the first failure.
template <class... T>
bool Read(IFile& in, T&... values)
{
    return (in.readValue(values) && ...);
}

} // namespace

// ---- comparison and derived values -----------------------------------------------------

int SDFObj::difference(SDFObj const& o) const
{
    if (shape != o.shape)
        return 0;
    float const mine[] = {dims.x, dims.y, dims.z, step.x, step.y, step.z, joint0, joint1,
                          clip0.x, clip0.y, clip0.z, clip1.x, clip1.y, clip1.z,
                          R, thickness, falloff, paintFalloff, arrayRadius, arrayAngle};
    float const theirs[] = {o.dims.x, o.dims.y, o.dims.z, o.step.x, o.step.y, o.step.z, o.joint0, o.joint1,
                            o.clip0.x, o.clip0.y, o.clip0.z, o.clip1.x, o.clip1.y, o.clip1.z,
                            o.R, o.thickness, o.falloff, o.paintFalloff, o.arrayRadius, o.arrayAngle};
    for (int i = 0; i < 20; ++i)
        if (mine[i] != theirs[i])
            return i + 1;
    uint8_t const a[] = {operation, shell, joint, blend, nx, ny, nz, count, clipShell, arrayType};
    uint8_t const b[] = {o.operation, o.shell, o.joint, o.blend, o.nx, o.ny, o.nz, o.count, o.clipShell, o.arrayType};
    for (int i = 0; i < 10; ++i)
        if (a[i] != b[i])
            return i + 21;
    return -1;
}

void SDFObj::validate_clipping()
{
    for (int i = 0; i < 3; ++i) {
        if (clip0[i] + 0.001f < clip1[i])
            continue;
        if (clip0[i] + 0.001f > 1) {
            clip1[i] = 1;
            clip0[i] = 0.999f;
        } else {
            clip1[i] = clip0[i] + 0.001f;
        }
    }
}

bool SDFObj::arrayActive() const
{
    if (arrayType == SDF_ARRAY_LINEAR)
        return nx > 1 || ny > 1 || nz > 1;
    return count > 1;
}

Vector3<float> SDFObj::n() const
{
    if (!arrayActive())
        return {};
    auto half = [](int c) { return float((c - 1) / 2) + (c % 2 == 0 ? 0.5f : 0.0f); };
    return {half(nx), half(ny), half(nz)};
}

bool SDFObj::clipActive() const
{
    for (int i = 0; i < 3; ++i)
        if (clip0[i] != -1.0f || clip1[i] != 1.0f)
            return true;
    return false;
}

int SDFObj::shaderShape() const
{
    return shape == SDF_TORUS && dims.z < 360.0f ? SDF_CAPPED_TORUS : shape;
}

// ---- bounds ----------------------------------------------------------------------------

AABB SDFObj::_obb_full_shape() const
{
    Vector3<double> h(halfDims());
    switch (shape) {
    case SDF_SPHERE:
        return Box(h.x, h.x, h.x);
    case SDF_ELLIPSOID:
    case SDF_BOX:
        return Box(h.x, h.y, h.z);
    case SDF_CYLINDER:
        return Box(h.x, h.x, h.y);
    case SDF_TORUS:
    case SDF_CAPPED_TORUS:
        return Box(h.x + h.y, h.x + h.y, h.y);
    case SDF_CHAINLINK:
        return Box(h.x + h.y + h.z, h.x + h.y, h.y);
    case SDF_CAPSULE:
        return Box(h.x + h.y, h.x, h.x);
    case SDF_BICAPSULE: {
        double r = std::max(h.x, h.y);
        AABB box = Box(0, r, r);
        box.min.x = std::min(h.z - h.y, -h.z - h.x);
        box.max.x = std::max(h.z + h.y, -h.z + h.x);
        return box;
    }
    default:
        return Box(h.x, h.x, h.x);
    }
}

AABB SDFObj::_obb_tight_shape() const
{
    if (shaderShape() != SDF_CAPPED_TORUS)
        return _obb_full_shape();
    // The arc is centred on +y and spans the half angle to either side.
    double R0 = dims.x * 0.5, r = dims.y * 0.5;
    double half = std::max(0.0, double(dims.z)) * 0.5 * PI / 180.0;
    double x = R0 * std::sin(std::min(half, PI / 2));
    double yLow = half >= PI ? -R0 : R0 * std::cos(half);
    AABB box;
    box.min = {-x - r, std::min(yLow, R0) - r, -r};
    box.max = {x + r, R0 + r, r};
    return box;
}

void SDFObj::_obb_add_shell(AABB& box) const
{
    if (shell == SDF_SHELL_OUTER)
        box.inflate(std::abs(thickness));
    else if (shell == SDF_SHELL_SYMMETRIC)
        box.inflate(std::abs(thickness) * 0.5);
}

void SDFObj::_obb_rot(AABB& box, AABB const& shapeBox, int a, int b, double radius, double angle, int copies)
{
    double stepAngle = copies > 1 ? angle / (copies - 1) : 0;
    for (int k = 0; k < copies; ++k) {
        double c = std::cos(k * stepAngle), s = std::sin(k * stepAngle);
        for (int corner = 0; corner < 8; ++corner) {
            Vector3<double> p(corner & 1 ? shapeBox.max.x : shapeBox.min.x, corner & 2 ? shapeBox.max.y : shapeBox.min.y,
                              corner & 4 ? shapeBox.max.z : shapeBox.min.z);
            double u = p[a] + radius, v = p[b];
            p[a] = u * c - v * s;
            p[b] = u * s + v * c;
            box.add(p);
        }
    }
}

void SDFObj::_obb_array(AABB& box, AABB const& shapeBox) const
{
    box = shapeBox;
    if (!arrayActive() || shapeBox.empty())
        return;
    Vector3<double> h(halfDims());
    if (arrayType == SDF_ARRAY_LINEAR) {
        Vector3<double> reach = Vector3<double>(n()) * (h * Vector3<double>(step));
        for (int i = 0; i < 3; ++i) {
            box.min[i] -= std::abs(reach[i]);
            box.max[i] += std::abs(reach[i]);
        }
        return;
    }
    // Around x the copies turn in yz, around y in zx, around z in xy.
    int a = arrayType == SDF_ARRAY_X ? 1 : arrayType == SDF_ARRAY_Y ? 2 : 0;
    int b = (a + 1) % 3;
    double radius = arrayRadius * h[(arrayType / 2) % 3];
    box = AABB();
    _obb_rot(box, shapeBox, a, b, radius, arrayAngle, count);
}

AABB SDFObj::clipBox(AABB const& box) const
{
    AABB clipped;
    for (int i = 0; i < 3; ++i) {
        double size = box.max[i] - box.min[i];
        clipped.min[i] = box.min[i] + (double(clip0[i]) + 1) * 0.5 * size;
        clipped.max[i] = box.min[i] + (double(clip1[i]) + 1) * 0.5 * size;
    }
    return clipped;
}

AABB SDFObj::obb_tight() const
{
    AABB box = _obb_tight_shape();
    _obb_add_shell(box);
    if (clipActive())
        box = clipBox(box);
    AABB single = box;
    _obb_array(box, single);
    return box;
}

// ---- the record ------------------------------------------------------------------------

void SDFObj::DataWrite(OFile& out) const
{
    out.writeValue(dims);
    for (float v : {R, thickness, falloff, paintFalloff})
        out.writeValue(v);
    for (uint8_t v : {shape, operation, shell, blend})
        out.writeValue(v);
    out.writeValue(step);
    for (uint8_t v : {nx, ny, nz})
        out.writeValue(v);
    out.writeValue(clip0);
    out.writeValue(clip1);
    out.writeValue(clipShell);
    out.writeValue(arrayRadius);
    out.writeValue(count);
    out.writeValue(arrayType);
    out.writeValue(arrayAngle);
    out.writeValue(joint);
    out.writeValue(joint0);
    out.writeValue(joint1);
    out.writeValue(priority);
    out.writeValue(bracket);
}

bool SDFObj::DataRead(IFile& in, int version)
{
    if (!Read(in, dims, R, thickness, falloff))
        return false;
    if (version >= SDF_VERSION_PAINT_FALLOFF) {
        if (!Read(in, paintFalloff))
            return false;
    } else {
        paintFalloff = 0;
    }
    bool ok = Read(in, shape, operation, shell, blend);
    if (ok && version > 20230410)
        ok = Read(in, step, nx, ny, nz);
    if (ok && version > 20230426)
        ok = Read(in, clip0, clip1, clipShell);
    if (ok && version > 20230500)
        ok = Read(in, arrayRadius, count, arrayType);
    if (ok && version > 20230512)
        ok = Read(in, arrayAngle, joint);
    if (ok && version > 20230530)
        ok = Read(in, joint0, joint1);
    if (ok && version > 20230710)
        ok = Read(in, priority, bracket);
    // The torus angle came with this version; older tori are whole rings.
    if (version < SDF_VERSION_TORUS_ANGLE && shape == SDF_TORUS)
        dims.z = 360;
    return ok;
}

std::vector<std::string> SDFObj::repair()
{
    std::vector<std::string> repairs;
    SDFObj const defaults;
    auto byte = [&](uint8_t& v, int limit, uint8_t fallback, char const* name) {
        if (v < limit)
            return;
        repairs.push_back(std::string(name) + " " + std::to_string(v) + " out of range");
        v = fallback;
    };
    if (shape == SDF_CAPPED_TORUS) {
        repairs.push_back("shape 8 stored: kept as a torus");
        shape = SDF_TORUS;
    }
    byte(shape, SDF_PANEL_SHAPES, SDF_SPHERE, "shape");
    byte(operation, SDF_OPERATIONS, SDF_ADD, "operation");
    byte(shell, 4, SDF_SHELL_SOLID, "shell");
    byte(joint, 4, SDF_JOINT_NONE, "joint");
    byte(blend, 3, SDF_BLEND_SHARP, "blend");
    byte(clipShell, 2, 1, "clip shell");
    for (uint8_t* c : {&nx, &ny, &nz, &count})
        if (*c == 0) {
            repairs.push_back("array count 0");
            *c = 1;
        }
    if (arrayType != SDF_ARRAY_LINEAR && arrayType != SDF_ARRAY_X && arrayType != SDF_ARRAY_Y &&
        arrayType != SDF_ARRAY_Z) {
        repairs.push_back("array type " + std::to_string(arrayType) + " unknown");
        arrayType = SDF_ARRAY_LINEAR;
    }

    float* values[] = {&dims.x, &dims.y, &dims.z, &step.x, &step.y, &step.z, &clip0.x, &clip0.y, &clip0.z,
                       &clip1.x, &clip1.y, &clip1.z, &joint0, &joint1, &R, &thickness, &falloff,
                       &paintFalloff, &arrayRadius, &arrayAngle};
    float const* fallbacks[] = {&defaults.dims.x, &defaults.dims.y, &defaults.dims.z, &defaults.step.x,
                                &defaults.step.y, &defaults.step.z, &defaults.clip0.x, &defaults.clip0.y,
                                &defaults.clip0.z, &defaults.clip1.x, &defaults.clip1.y, &defaults.clip1.z,
                                &defaults.joint0, &defaults.joint1, &defaults.R, &defaults.thickness,
                                &defaults.falloff, &defaults.paintFalloff, &defaults.arrayRadius,
                                &defaults.arrayAngle};
    bool nonFinite = false;
    for (int i = 0; i < 20; ++i)
        if (!std::isfinite(*values[i])) {
            *values[i] = *fallbacks[i];
            nonFinite = true;
        }
    if (nonFinite)
        repairs.push_back("parameters not finite: defaults taken");

    SDFObj before = *this;
    for (int i = 0; i < 3; ++i) {
        clip0[i] = std::clamp(clip0[i], -1.0f, 1.0f);
        clip1[i] = std::clamp(clip1[i], -1.0f, 1.0f);
    }
    validate_clipping();
    if (difference(before) >= 0)
        repairs.push_back("clip range out of order");
    return repairs;
}

} // namespace vel
