// Corner normals: once per half-edge texel, the normalised sum of the face normals of its
// smooth fan: from the fan's start (edgeStart), on by next and twin, up to a sharp or border
// edge or back at the start. So a fan between sharp edges shares one normal.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define CLAY_TABLES_ONLY
#include ":/shaders/Clay/ClayCommon.glsl"
uniform isampler2D EdgesHFEN;
uniform sampler2D FacesN;
layout(location = 0) out vec4 normal;
const int FAN_MAX = 256;
void main()
{
    ivec4 h = texelFetch(EdgesHFEN, ivec2(gl_FragCoord.xy), 0);
    if (INVALID(h.y))
        discard;
    int start = NOFLAGS(h.z);
    int c = start;
    vec3 sum = vec3(0.0);
    for (int i = 0; i < FAN_MAX && c >= 0; ++i) {
        sum += texelFetch(FacesN, ENCODE(texelFetch(EdgesHFEN, ENCODE(c), 0).y), 0).xyz;
        c = NextInFan(EdgesHFEN, c, start);
    }
    normal = vec4(dot(sum, sum) > 0.0 ? normalize(sum) : vec3(0.0), 0.0);
}
