// Face normals: once per face texel, the normalised sum of the fan's cross products from the
// face's first vertex, walking the ring by e[1].
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"
uniform isampler2D FacesE;
uniform isampler2D EdgesVE;
layout(location = 0) out vec4 normal;
const int RING_MAX = 4096; // a longer ring is broken data
vec3 At(int address)
{
    return texelFetch(Positions, ENCODE(address), 0).xyz;
}
void main()
{
    int first = texelFetch(FacesE, ivec2(gl_FragCoord.xy), 0).x;
    if (INVALID(first))
        discard;
    first = NOFLAGS(first);
    ivec4 a = texelFetch(EdgesVE, ENCODE(first), 0);
    ivec4 b = texelFetch(EdgesVE, ENCODE(NOFLAGS(a.w)), 0);
    vec3 p0 = At(a.y);
    vec3 p1 = At(b.y);
    vec3 sum = vec3(0.0);
    int e = NOFLAGS(b.w);
    for (int i = 0; i < RING_MAX && e != first; ++i) {
        ivec4 c = texelFetch(EdgesVE, ENCODE(e), 0);
        vec3 p2 = At(c.y);
        sum += cross(p1 - p0, p2 - p0);
        p1 = p2;
        e = NOFLAGS(c.w);
    }
    normal = vec4(dot(sum, sum) > 0.0 ? normalize(sum) : vec3(0.0), 0.0);
}
