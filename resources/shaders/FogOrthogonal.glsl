// FogOrthogonal: distance fog. Each drawn pixel's eye distance (its depth along the view axis)
// comes from the depth texture "Depth" through "ProjectionMatrixInv", so that one program
// serves both cameras; from "NearFar".x
// to "NearFar".y the picture "Image" turns linearly towards "FogColor".rgb, up to the strength
// "FogColor".a. The background (depth 1) is left as it is.
// RANGE_TEXTURE: the range is that of the depths in "Range" (1 x 1, min and max in r and g, as
// GLMinMax reduces them), turned into eye distances here, so that no read-back stalls the frame.
// OVER: no "Image"; the fog colour with its amount in alpha, for blending over the picture.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/ScreenSpace.glsl"
#ifndef OVER
uniform sampler2D Image;
#endif
uniform sampler2D Depth;
uniform mat4 ProjectionMatrixInv;
#ifdef RANGE_TEXTURE
uniform sampler2D Range;
#else
uniform vec2 NearFar;
#endif
uniform vec4 FogColor;
out vec4 oColor;
void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
#ifdef OVER
    vec4 c = vec4(0.0); // blending supplies the picture: fog colour over it by the fog's amount
#else
    vec4 c = texelFetch(Image, pixel, 0);
#endif
    float d = texelFetch(Depth, pixel, 0).r;
    if (d >= 1.0) {
        oColor = c;
        return;
    }
    vec2 uv = (vec2(pixel) + 0.5) / vec2(textureSize(Depth, 0));
    float distance = abs(ViewPosition(ProjectionMatrixInv, uv, d).z);
#ifdef RANGE_TEXTURE
    vec2 range = texelFetch(Range, ivec2(0), 0).rg;
    vec2 NearFar = vec2(abs(ViewPosition(ProjectionMatrixInv, uv, range.x).z),
                        abs(ViewPosition(ProjectionMatrixInv, uv, range.y).z));
#endif
    float f = clamp((distance - NearFar.x) / max(NearFar.y - NearFar.x, 1e-6), 0.0, 1.0) * FogColor.a;
#ifdef OVER
    oColor = vec4(FogColor.rgb, f);
#else
    oColor = vec4(mix(c.rgb, FogColor.rgb, f), c.a);
#endif
}
