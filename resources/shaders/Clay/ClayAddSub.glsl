// Add or subtract material up to a height above the brush plane, along the normal (negated on
// the CPU to subtract). PARAMETERS = (1/radius, falloff, height, radius * strength).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 normal;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 p = (position - center) * PARAMETERS.x;
    if (dot(p, p) >= 1.0)
        discard; // outside the brush: adds nothing to the sum
    float S = Falloff(length(p), PARAMETERS.y);
    deformation = S * PARAMETERS.w * max(PARAMETERS.z - dot(p, normal), 0.0) * normal;
}
