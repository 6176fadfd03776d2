// Layers of the groups before the composite, drawing into the G-buffer: a normal with its
// render flags, and with materials the three material targets.
#include ":/shaders/ShaderIO/Uniforms.glsl"
#ifdef RENDER_PBR
uniform sampler2D iRoughMetal;
uniform sampler2D iColorAlpha;
uniform sampler2D iLightThick;
#endif
layout(location = 0) out vec4 oNormal;
#ifdef RENDER_PBR
layout(location = 1) out vec2 oRoughMetal;
layout(location = 2) out vec4 oColorAlpha;
layout(location = 3) out vec4 oLightThick;
#endif
// The normal target's texel: the flags travel in the bits of w, marked as drawn (bit 29).
vec4 fNormal(vec3 n, int RenderFlags)
{
    return vec4(n, intBitsToFloat(RenderFlags | (1 << 29)));
}
