// Bend: the line along "axis" wraps round a circle of radius R in the plane of axis and modif.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 axis;
uniform vec3 modif;
uniform float R;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 p = position - center;
    float x = dot(p, axis);
    float y = dot(p, modif);
    float r = y + R;
    float a = x / R;
    deformation = axis * (r * sin(a) - x) + modif * (r * cos(a) - r);
}
