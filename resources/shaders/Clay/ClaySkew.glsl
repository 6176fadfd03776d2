// Skew: moves along "axis" by the offset along "modif" (a scale along one direction when
// modif is that direction times the factor minus one).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 axis;
uniform vec3 modif;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    deformation = dot(position - center, modif) * axis;
}
