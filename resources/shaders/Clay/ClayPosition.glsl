// Apply: position plus the step's deformation into another copy, or (BLEND) the deformation
// alone, added by blending onto the positions in place.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform sampler2D Deformations;
layout(location = 0) out vec3 result;
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 d = texelFetch(Deformations, ivec2(gl_FragCoord.xy), 0).xyz;
#ifdef BLEND
    result = d;
#else
    result = position + d;
#endif
}
