// Swirl: the two other coordinates turn by "angle" times the coordinate along the axis
// (X_AXIS, Y_AXIS, else z).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform float angle;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 p = position - center;
#if defined(X_AXIS)
    float a = angle * p.x;
    vec2 plane = p.yz;
#elif defined(Y_AXIS)
    float a = angle * p.y;
    vec2 plane = p.zx;
#else
    float a = angle * p.z;
    vec2 plane = p.xy;
#endif
    float c = cos(a) - 1.0;
    float s = sin(a);
    vec2 d = mat2(c, s, -s, c) * plane;
#if defined(X_AXIS)
    deformation = vec3(0.0, d.x, d.y);
#elif defined(Y_AXIS)
    deformation = vec3(d.y, 0.0, d.x);
#else
    deformation = vec3(d.x, d.y, 0.0);
#endif
}
