// Deform: the displacement, faded by the falloff. PARAMETERS = (1/radius, falloff).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 displacement;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    float r = length((position - center) * PARAMETERS.x);
    if (r >= 1.0)
        discard; // outside the brush: adds nothing to the sum
    deformation = displacement * Falloff(r, PARAMETERS.y);
}
