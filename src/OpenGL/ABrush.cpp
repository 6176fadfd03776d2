#include "OpenGL/ABrush.h"

#include <algorithm>
#include <cmath>

namespace vel {

bool ABrush::SameMousePosition(ABrush const& a, ABrush const& b)
{
    return std::floor(a.screen.x) == std::floor(b.screen.x) && std::floor(a.screen.y) == std::floor(b.screen.y);
}

SBrush ABrush::ToSBrush() const
{
    SBrush s;
    s.kind = kind;
    s.x = int(std::floor(screen.x));
    s.y = int(std::floor(screen.y));
    // A degenerate placement (a tool scaled to nothing) keeps world coordinates.
    Matrix34<double> const inverse = elementMatrix.invertible() ? inv(elementMatrix) : Matrix34<double>();
    s.position = Vector3<float>(world * inverse);
    Vector3<double> const n = inverse.transformDirection(normal);
    s.normal = n.length2() > 1e-20 ? Vector3<float>(n.normalize()) : Vector3<float>(n);
    // The radius along a unit direction: the normal's, or x for a brush with none.
    Vector3<double> const unit = normal.length2() > 1e-20 ? normal.normalize() : Vector3<double>(1, 0, 0);
    s.radius = float(0.5 * double(size) * inverse.transformDirection(unit).length());
    s.material = material;
    s.mask = mask;
    s.extra[0] = select;
    s.extra[1] = property;
    s.extra[2] = mirror;
    s.pressure = pressure;
    return s;
}

float PressureCurve(float raw, float exponent, float minimum)
{
    float const p = std::clamp(std::isfinite(raw) ? raw : 0.0f, 0.0f, 1.0f);
    float const m = std::clamp(minimum, 0.0f, 1.0f);
    return m + (1.0f - m) * std::pow(p, std::max(exponent, 1e-3f));
}

} // namespace vel
