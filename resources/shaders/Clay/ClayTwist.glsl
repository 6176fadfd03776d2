// Twist: turns the offset from the axis through the centre by the step angle, fading as
// (1 - |p|^2)^2. PARAMETERS = (1/radius, cosA - 1, sinA).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 axis;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 d = position - center;
    vec3 p = d * PARAMETERS.x;
    float r = dot(p, p);
    if (r >= 1.0) {
        deformation = vec3(0.0);
        return;
    }
    r = (1.0 - r) * (1.0 - r);
    vec3 x = d - dot(d, axis) * axis;
    deformation = r * (x * PARAMETERS.y + cross(axis, x) * PARAMETERS.z);
}
