// ClayCommon: the texel addressing of the clay tables, and the frame of every sculpt pass.
// A table word packs a record's texel (column bits 0-13, row bits 14-27) with four flags
// (bits 31 sharp, 30 anchor, 29, 28); all ones is a padding texel, 0x0fffffff "no record".
// Passes run once per vertex texel over the vertex table: ClayVertex gives the texel's vertex
// and tells padding apart. A stage that defines CLAY_TABLES_ONLY first gets the macros only.
#ifndef VEL_CLAY_COMMON
#define VEL_CLAY_COMMON
#define ENCODE(x) (ivec2((x), (x) >> 14) & 0x3fff)
#define NOFLAGS(x) ((x) & 0x0fffffff)
#define SHARP(x) ((x) < 0)
#define ANCHOR(x) (((x) & 0x40000000) != 0)
#define INVALID(x) ((x) == -1)
#define NO_RECORD 0x0fffffff

// The corner after `c` in a smooth fan of the half-edge table `hfen` (addresses without
// flags): the twin of c's next, or -1 at a sharp or border edge and back at `start`.
int NextInFan(isampler2D hfen, int c, int start)
{
    ivec4 next = texelFetch(hfen, ENCODE(NOFLAGS(texelFetch(hfen, ENCODE(c), 0).w)), 0);
    if (SHARP(next.x))
        return -1;
    int twin = NOFLAGS(next.x);
    return twin == start ? -1 : twin;
}

#ifndef CLAY_TABLES_ONLY
uniform isampler2D VertsInfo;
uniform sampler2D Positions;

// The vertex of this fragment's texel; false on padding (the caller discards).
bool ClayVertex(out int info, out vec3 position)
{
    ivec2 texel = ivec2(gl_FragCoord.xy);
    info = texelFetch(VertsInfo, texel, 0).x;
    position = texelFetch(Positions, texel, 0).xyz;
    return !INVALID(info);
}
// The opening of every pass: `info` and `position` of the texel's vertex, padding discarded.
// (One line: GLSL 3.30 has no line continuation.)
#define CLAY_VERTEX_OR_DISCARD int info; vec3 position; if (!ClayVertex(info, position)) discard

// The brush falloff at distance r (in radii): 1 up to r = falloff, exactly 0 from r = 1 on,
// smooth between. Written out rather than smoothstep(1, falloff, r), whose reversed edges GLSL
// leaves undefined, and guarded for falloff 1, which would divide by zero.
float Falloff(float r, float falloff)
{
    if (r >= 1.0)
        return 0.0;
    if (falloff >= 1.0)
        return 1.0;
    float t = clamp((r - 1.0) / (falloff - 1.0), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}
#endif
#endif
