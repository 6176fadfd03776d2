// Paint selection: the weight strength * falloff. PARAMETERS = (1/radius, falloff, strength).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec4 PARAMETERS;
layout(location = 0) out float weight;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    float r = length((position - center) * PARAMETERS.x);
    if (r >= 1.0)
        discard; // outside the brush: adds nothing to the sum
    weight = PARAMETERS.z * Falloff(r, PARAMETERS.y);
}
