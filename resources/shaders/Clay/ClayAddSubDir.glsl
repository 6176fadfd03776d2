// Add or subtract along a stroke: a box in the stroke frame (x the direction, z the normal,
// columns pre-divided by the radius), softened at its sides. "normal" carries strength and
// radius. PARAMETERS = (falloff, height).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 normal;
uniform mat3 frame;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    float height = PARAMETERS.y;
    vec3 q = (position - center) * frame;
    vec3 s = step(abs(q), vec3(1.0, 1.0, height));
    float d = max(height * s.x * s.y - q.z, 0.0);
    d *= Falloff(abs(q.x), 0.2) * Falloff(abs(q.y), 0.7) * s.z;
    deformation = d * normal;
}
