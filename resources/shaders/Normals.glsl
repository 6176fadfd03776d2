// Normals: view-space normals from the depth texture "Depth"; "matrix" takes a point of normalised
// device coordinates back to view space (the inverse projection). w is taken from "Image" (the
// flags a fast render writes alone). Of the two neighbours on each axis the one nearer in depth
// is used, so that silhouettes do not bend the normals. The background (depth 1) gets (0, 0, 0).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Depth;
uniform sampler2D Image;
uniform mat4 matrix;
in vec2 vUV;
out vec4 oColor;
vec3 ViewPosition(ivec2 p, ivec2 size)
{
    p = clamp(p, ivec2(0), size - 1);
    float d = texelFetch(Depth, p, 0).r;
    vec4 q = matrix * vec4((vec2(p) + 0.5) / vec2(size) * 2.0 - 1.0, d * 2.0 - 1.0, 1.0);
    return q.xyz / q.w;
}
void main()
{
    ivec2 size = textureSize(Depth, 0);
    ivec2 p = ivec2(gl_FragCoord.xy);
    float w = texelFetch(Image, p, 0).w;
    if (texelFetch(Depth, p, 0).r >= 1.0) {
        oColor = vec4(0.0, 0.0, 0.0, w);
        return;
    }
    vec3 c = ViewPosition(p, size);
    vec3 l = c - ViewPosition(p - ivec2(1, 0), size), r = ViewPosition(p + ivec2(1, 0), size) - c;
    vec3 b = c - ViewPosition(p - ivec2(0, 1), size), t = ViewPosition(p + ivec2(0, 1), size) - c;
    // At a border one neighbour is the texel itself (a zero step): the other one serves.
    vec3 dx = dot(r, r) == 0.0 || (dot(l, l) > 0.0 && abs(l.z) < abs(r.z)) ? l : r;
    vec3 dy = dot(t, t) == 0.0 || (dot(b, b) > 0.0 && abs(b.z) < abs(t.z)) ? b : t;
    vec3 n = cross(dx, dy);
    oColor = vec4(dot(n, n) > 0.0 ? normalize(n) : vec3(0.0, 0.0, 1.0), w);
}
