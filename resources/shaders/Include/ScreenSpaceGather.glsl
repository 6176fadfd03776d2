// ScreenSpaceGather: the sampling loop of "SSAO" and "SSSS". The including file defines SCALE,
// BIAS and MAX_DISTANCE, and GATHER_COLOR to gather the picture's colour as well.
//
// Around each pixel "PARAMETERS".x samples (radius "PARAMETERS".y, in units of the picture's
// height) spiral outwards: sample i lies at (i / samples)^2 of the radius, each step turned by
// the angle of (SIN, COS), from a start angle that is hashed from the pixel and "Time". Each
// sample weighs max(0, dot(n, v) - BIAS) * SCALE / (SCALE + l), faded out between MAX_DISTANCE / 2
// and MAX_DISTANCE, with v the direction to the sample's view position and l its distance over
// the pixel's own view depth, so that the effect does not depend on the scene's units. Samples
// outside the picture or on the background (depth 1) weigh nothing; a background pixel gathers
// nothing at all. With GATHER the target is smaller: each of its pixels gathers for the depth
// texel at "Reduction" times its position. Includes are not nested: the including file
// includes ScreenSpace first.
uniform mat4 ProjectionMatrixInv;
uniform sampler2D Image;
uniform sampler2D Depth;
uniform sampler2D Normal;
uniform vec3 PARAMETERS; // samples, radius, strength
uniform float Time;
#ifdef GATHER
uniform int Reduction; // the target is this many times smaller than the depth, each way
#endif
in vec2 vUV;
out vec4 oColor;

const float SIN = 0.6754631;
const float COS = 0.7373937;

struct Gathered {
    float weight; // the sum of the weights
    vec3 color;   // the sum of the weighted colours (GATHER_COLOR)
    int samples;
    float z;      // the view depth of the pixel gathered for; 0 on the background
};

Gathered Gather()
{
    Gathered g = Gathered(0.0, vec3(0.0), max(int(PARAMETERS.x), 1), 0.0);
    ivec2 size = textureSize(Depth, 0);
#ifdef GATHER
    ivec2 pixel = min(ivec2(gl_FragCoord.xy) * Reduction, size - 1);
#else
    ivec2 pixel = ivec2(gl_FragCoord.xy);
#endif
    float d = texelFetch(Depth, pixel, 0).r;
    if (d >= 1.0)
        return g;
    vec2 uv = (vec2(pixel) + 0.5) / vec2(size);
    vec3 p = ViewPosition(ProjectionMatrixInv, uv, d);
    g.z = p.z;
    vec3 n = texelFetch(Normal, pixel, 0).xyz;
    float scale = max(abs(p.z), 1e-6);
    float angle = Hash12(gl_FragCoord.xy, Time) * 6.2831853;
    vec2 direction = vec2(sin(angle), cos(angle));
    vec2 aspect = vec2(float(size.y) / float(size.x), 1.0);
    mat2 turn = mat2(COS, SIN, -SIN, COS);
    for (int i = 1; i <= g.samples; ++i) {
        float f = float(i) / float(g.samples);
        vec2 s = uv + direction * (f * f * PARAMETERS.y) * aspect;
        direction = turn * direction;
        ivec2 q = ivec2(floor(s * vec2(size)));
        if (any(lessThan(q, ivec2(0))) || any(greaterThanEqual(q, size)))
            continue;
        float ds = texelFetch(Depth, q, 0).r;
        if (ds >= 1.0)
            continue;
        vec3 v = ViewPosition(ProjectionMatrixInv, (vec2(q) + 0.5) / vec2(size), ds) - p;
        float l = length(v);
        if (l <= 0.0)
            continue;
        v /= l;
        l /= scale;
        float w = max(0.0, dot(n, v) - BIAS) * SCALE / (SCALE + l) *
                  (1.0 - smoothstep(MAX_DISTANCE * 0.5, MAX_DISTANCE, l));
        g.weight += w;
#ifdef GATHER_COLOR
        g.color += w * texelFetch(Image, q, 0).rgb;
#endif
    }
    return g;
}
