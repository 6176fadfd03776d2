#include "OpenGL/Rendering.h"

#include <cmath>

namespace vel {

bool Rendering::hasMaterials(int style)
{
    return style == STYLE_COLOR || style == STYLE_PBR;
}

TRenderState Rendering::renderState(int kind) const
{
    TRenderState state;
    state.kind = kind;
    state.twoSided = twoSided;
    state.plain = plain;
    return state;
}

Vector4<float> Rendering::clearColor() const
{
    float const alpha = transparentBackground ? 0.0f : 1.0f;
    if (style == 1)
        return {0.0f, 0.0f, 0.0f, alpha};
    if (style == 3)
        return {0.5f, 0.5f, 1.0f, alpha};
    Vector4<float> c = background;
    c.w = alpha;
    if (!hasMaterials(style) || tonemap == 0)
        return c;
    float* channel[3] = {&c.x, &c.y, &c.z};
    for (float* v : channel) {
        *v = std::pow(*v, gamma);
        if (tonemap == 2)
            *v = *v / (1.001f - *v);
        *v /= exposure;
    }
    return c;
}

} // namespace vel
