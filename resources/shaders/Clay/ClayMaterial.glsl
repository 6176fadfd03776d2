// Paint: once per half-edge texel, the corner's material mixed towards the brush's by the
// weight of its vertex (v[1]) times each channel's mask. Texels of weight 0 are copied, so the
// whole table is written. PARAMETERS: colour alpha; light thickness; (colour, alpha, light,
// thickness masks); (roughness, metalness, their masks), in the units of the packed words.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define CLAY_TABLES_ONLY
#include ":/shaders/Clay/ClayCommon.glsl"
#include ":/shaders/Include/MaterialUtils.glsl"
uniform isampler2D iEdgesVE;
uniform usampler2D iEdgesMaterial;
uniform sampler2D iVerticesWeight;
uniform vec4 PARAMETERS[4];
layout(location = 0) out uvec4 material;
void main()
{
    ivec2 texel = ivec2(gl_FragCoord.xy);
    ivec4 ve = texelFetch(iEdgesVE, texel, 0);
    if (INVALID(ve.x))
        discard;
    material = texelFetch(iEdgesMaterial, texel, 0);
    float w = texelFetch(iVerticesWeight, ENCODE(ve.y), 0).x;
    if (w <= 0.0)
        return;
    w = min(w, 1.0);
    vec4 colorAlpha, lightThick;
    vec2 roughMetal;
    DecodeMaterialUnsigned(material, colorAlpha, lightThick, roughMetal);
    vec4 m = w * PARAMETERS[2];
    colorAlpha = mix(colorAlpha, PARAMETERS[0], vec4(m.x, m.x, m.x, m.y));
    lightThick = mix(lightThick, PARAMETERS[1], vec4(m.z, m.z, m.z, m.w));
    roughMetal = mix(roughMetal, PARAMETERS[3].xy, w * PARAMETERS[3].zw);
    material = EncodeMaterialUnsigned(colorAlpha, lightThick, roughMetal);
}
