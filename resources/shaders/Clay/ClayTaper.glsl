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
    int info;
    vec3 position;
    if (!ClayVertex(info, position))
        discard;
    vec3 p = position - center;
    deformation = modif * (dot(p, axis) * dot(p, modif));
}
