#include "OpenGL/ABrush.h"

#include <algorithm>
#include <cmath>

namespace vel {

bool ABrush::SameMousePosition(ABrush const& a, ABrush const& b)
{
    return std::floor(a.screen.x) == std::floor(b.screen.x) && std::floor(a.screen.y) == std::floor(b.screen.y);
}

float PressureCurve(float raw, float exponent, float minimum)
{
    float const p = std::clamp(std::isfinite(raw) ? raw : 0.0f, 0.0f, 1.0f);
    float const m = std::clamp(minimum, 0.0f, 1.0f);
    return m + (1.0f - m) * std::pow(p, std::max(exponent, 1e-3f));
}

} // namespace vel
