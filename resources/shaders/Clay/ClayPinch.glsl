// Pinch: pulls vertices towards the centre by (1 - |p|^2)^2. PARAMETERS = (1/radius, intensity).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 d = position - center;
    vec3 p = d * PARAMETERS.x;
    if (dot(p, p) >= 1.0)
        discard; // outside the brush: adds nothing to the sum
    float r = 1.0 - min(dot(p, p), 1.0);
    deformation = -r * r * PARAMETERS.y * d;
}
