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
#ifdef BLEND
    // Only the padding test and the deformation: the positions are not read.
    ivec2 texel = ivec2(gl_FragCoord.xy);
    if (INVALID(texelFetch(VertsInfo, texel, 0).x))
        discard;
    vec3 d = texelFetch(Deformations, texel, 0).xyz;
    if (d == vec3(0.0))
        discard; // adding zero changes nothing: spared the blend
    result = d;
#else
    CLAY_VERTEX_OR_DISCARD;
    result = position + texelFetch(Deformations, ivec2(gl_FragCoord.xy), 0).xyz;
#endif
}
