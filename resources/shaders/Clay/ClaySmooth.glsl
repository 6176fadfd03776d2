// Smooth: moves a vertex towards the mean of its neighbours by (1 - |p|^2)^2 * intensity. An
// anchor stays; a sharp vertex averages along sharp lines only and stays with more than two
// such neighbours. The fan is walked from the vertex's arriving half-edge: neighbour v[0] of
// the half-edge, then the twin of its next; a border adds the far end of the outgoing border.
// PARAMETERS = (1/radius, intensity).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"
uniform vec3 center;
uniform isampler2D EdgesHFE;
uniform isampler2D EdgesVE;
uniform vec4 PARAMETERS;
layout(location = 0) out vec3 deformation;
const int FAN_MAX = 256; // a longer fan is broken data: the walk stops there
vec3 At(int address)
{
    return texelFetch(Positions, ENCODE(address), 0).xyz;
}
void main()
{
    CLAY_VERTEX_OR_DISCARD;
    vec3 p = (position - center) * PARAMETERS.x;
    // What stays adds nothing to the sum.
    if (ANCHOR(info) || dot(p, p) >= 1.0 || NOFLAGS(info) == NO_RECORD)
        discard;
    bool sharp = SHARP(info);
    int start = NOFLAGS(info);
    int e = start;
    vec3 sum = vec3(0.0);
    int n = 0;
    for (int i = 0; i < FAN_MAX; ++i) {
        ivec4 ve = texelFetch(EdgesVE, ENCODE(e), 0);
        if (sharp == SHARP(ve.x)) {
            sum += At(ve.x);
            ++n;
        }
        int next = NOFLAGS(ve.w);
        e = NOFLAGS(texelFetch(EdgesHFE, ENCODE(next), 0).x);
        if (e == NO_RECORD) {
            int far = texelFetch(EdgesVE, ENCODE(next), 0).y;
            if (sharp == SHARP(far)) {
                sum += At(far);
                ++n;
            }
            break;
        }
        if (e == start)
            break;
    }
    if (n == 0 || (sharp && n > 2))
        discard;
    float r = (1.0 - dot(p, p)) * (1.0 - dot(p, p)) * PARAMETERS.y;
    deformation = r * (sum / float(n) - position);
}
