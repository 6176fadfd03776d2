// Volume deform: a divergence-free bump along frame[2], the stroke's direction.
// PARAMETERS = (1/radius^2, weight).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform mat3 frame;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    float iradius2 = PARAMETERS.x;
    vec3 x = position - center;
    float t2 = dot(x, x) * iradius2;
    if (t2 >= 1.0)
        discard; // outside the brush: adds nothing to the sum
    float t = sqrt(t2);
    float a = 1.0 - t2 * t * (4.0 - 3.0 * t);
    float b = 12.0 * (t - t2) * iradius2;
    vec3 longitudinal = a * frame[2];
    vec3 transverse0 = dot(x, frame[1]) * cross(x, frame[0]);
    vec3 transverse1 = dot(x, frame[0]) * cross(x, frame[1]);
    deformation = PARAMETERS.y * a * (longitudinal + b * (transverse0 - transverse1));
}
