// FilterDepthOfField: depth of field from the picture's blurred levels (see Include/BlurLevels).
// Each drawn pixel's eye distance (along the view axis) comes from "Depth" through
// "ProjectionMatrixInv"; its level of blur is "size" times its distance from the focus "Focus",
// relative to the focus, at most the last level. The background is as far as can be: fully blurred once "size" is above zero.
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
    oColor = blurred(vUV, r);
}
