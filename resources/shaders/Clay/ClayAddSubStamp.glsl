// Stamp: the alpha texture "Alpha" laid in the frame's xy plane, clipped to the unit sphere and
// to the stamp's square. "normal" carries strength and radius.
// PARAMETERS = (ratio.x, ratio.y, 1/radius).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 normal;
uniform mat3 frame;
uniform sampler2D Alpha;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 p = (position - center) * PARAMETERS.z;
    float r = step(-1.0, -dot(p, p));
    vec3 q = p * frame;
    r *= textureLod(Alpha, PARAMETERS.xy * q.xy + 0.5, 0.0).x;
    r *= float(all(lessThan(abs(q.xy), vec2(0.707))));
    deformation = r * normal;
}
