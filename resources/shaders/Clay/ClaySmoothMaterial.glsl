// Smooth paint: once per half-edge texel of weight above 0, the corner's material mixed by the
// weight towards the mean of its smooth fan (from edgeStart, on by next and twin, up to a sharp
// edge or the start).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define CLAY_TABLES_ONLY
#include ":/shaders/Clay/ClayCommon.glsl"
#include ":/shaders/Include/MaterialUtils.glsl"
uniform isampler2D iEdgesVE;
uniform isampler2D iEdgesHFEN;
uniform usampler2D iEdgesMaterial;
uniform sampler2D iVerticesWeight;
layout(location = 0) out uvec4 material;
const int FAN_MAX = 256;
void main()
{
    ivec2 texel = ivec2(gl_FragCoord.xy);
    ivec4 ve = texelFetch(iEdgesVE, texel, 0);
    if (INVALID(ve.x))
        discard;
    material = texelFetch(iEdgesMaterial, texel, 0);
    float w = min(texelFetch(iVerticesWeight, ENCODE(ve.y), 0).x, 1.0);
    if (w <= 0.0)
        return;
    int start = NOFLAGS(texelFetch(iEdgesHFEN, texel, 0).z);
    int c = start;
    vec4 sumColor = vec4(0.0), sumLight = vec4(0.0);
    vec2 sumRough = vec2(0.0);
    float n = 0.0;
    for (int i = 0; i < FAN_MAX && c >= 0; ++i) {
        vec4 colorAlpha, lightThick;
        vec2 roughMetal;
        DecodeMaterialUnsigned(texelFetch(iEdgesMaterial, ENCODE(c), 0), colorAlpha, lightThick, roughMetal);
        sumColor += colorAlpha;
        sumLight += lightThick;
        sumRough += roughMetal;
        n += 1.0;
        c = NextInFan(iEdgesHFEN, c, start);
    }
    vec4 colorAlpha, lightThick;
    vec2 roughMetal;
    DecodeMaterialUnsigned(material, colorAlpha, lightThick, roughMetal);
    material = EncodeMaterialUnsigned(mix(colorAlpha, sumColor / n, w), mix(lightThick, sumLight / n, w),
                                      mix(roughMetal, sumRough / n, w));
}
