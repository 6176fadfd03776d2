// Gradient selection: strength at the centre falling to 0 at centre + direction ("direction"
// comes divided by its squared length).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 direction;
uniform float strength;
layout(location = 0) out float weight;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    weight = strength * (1.0 - clamp(dot(position - center, direction), 0.0, 1.0));
}
