// Taper: widens along "modif" in proportion to the offset along "axis".
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
    vec3 p = position - center;
    deformation = modif * (dot(p, axis) * dot(p, modif));
}
