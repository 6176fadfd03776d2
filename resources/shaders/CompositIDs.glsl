// CompositIDs: each object id in a colour of its own, so that neighbouring objects part
// visibly; id 0 (nothing) is the background. The hash is mirrored on the CPU by the tests.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform isampler2D IDs; // object id, item, element id, spare
uniform vec4 Background;
out vec4 oColor;
vec3 idColor(int id)
{
    uint h = uint(id) * 2654435761u;
    h ^= h >> 15u;
    h *= 2246822519u;
    h ^= h >> 13u;
    return vec3(float(h & 255u), float((h >> 8u) & 255u), float((h >> 16u) & 255u)) / 255.0 * 0.75 + 0.25;
}
void main()
{
    int id = texelFetch(IDs, ivec2(gl_FragCoord.xy), 0).x;
    oColor = id == 0 ? Background : vec4(idColor(id), 1.0);
}
