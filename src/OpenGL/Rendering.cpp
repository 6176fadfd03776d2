#include "OpenGL/Rendering.h"

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

} // namespace vel
