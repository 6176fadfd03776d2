// FilterDepthOfField: depth of field from the picture's blurred levels (see Include/BlurLevels).
// Each drawn pixel's eye distance (along the view axis) comes from "Depth" through
// "ProjectionMatrixInv"; its level of blur is "size" times its distance from the focus "Focus",
// relative to the focus, at most the last level. The background is as far as can be: fully
// blurred once "size" is above zero.
// OVER: the picture, level 0, is not read: the blurred levels' part comes out with how much of
// the pixel it covers in alpha, for blending over the picture.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/ScreenSpace.glsl"
#include ":/shaders/Include/BlurLevels.glsl"
uniform sampler2D Depth;
uniform mat4 ProjectionMatrixInv;
uniform float Focus;
uniform float size;
in vec2 vUV;
out vec4 oColor;
void main()
{
    float d = texture(Depth, vUV).r;
    float r = size > 0.0 ? 4.0 : 0.0;
    if (d < 1.0) {
        float distance = abs(ViewPosition(ProjectionMatrixInv, vUV, d).z);
        r = min(size * abs(distance - Focus) / max(Focus, 1e-6), 4.0);
    }
#ifdef OVER
    float above = min(r, 1.0);
    oColor = above > 0.0 ? vec4(blurredAbove(vUV, r).rgb / above, above) : vec4(0.0);
#else
    oColor = blurred(vUV, r);
#endif
}
