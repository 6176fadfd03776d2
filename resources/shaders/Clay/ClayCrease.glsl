// Crease or ridge: a narrow groove across the stroke (frame x the direction, z the normal),
// sharp across it by (1 - |q.y|)^8. "normal" carries strength and radius.
// PARAMETERS = (1/radius, falloff).
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
    vec3 p = (position - center) * PARAMETERS.x;
    if (dot(p, p) >= 1.0)
        discard; // outside the brush: adds nothing to the sum
    vec3 q = abs(p * frame);
    float across = 1.0 - q.y;
    across *= across;
    across *= across;
    across *= across;
    deformation = Falloff(length(p), PARAMETERS.y) * Falloff(q.x, 0.0) * across * normal;
}
