// EdgeTileMask: the second pass of GLEdgeDetection and GLContour, one fragment per tile. A tile
// needs the full test ("oMask" 1) unless the summaries of EdgeTiles for it and its eight
// neighbours, which hold every pixel within TILE of it, prove that none of its pixels changes:
// - edges: one id alone, and that the background (which has no normals), or IDS_ONLY, or unit
//   normals within a cone narrow enough that any two of them keep a dot product above "limit"
//   (by MARGIN, for the rounding of the full test);
// - CONTOURS: no pixel asks for contours, or one id alone.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/EdgeTile.glsl"
#define MARGIN 0.01
#define UNIT 1.0e-3
#if !defined(CONTOURS) && !defined(IDS_ONLY)
#define NORMALS
#endif
uniform isampler2D Ids;
#ifdef NORMALS
uniform sampler2D Cone;
uniform sampler2D Length;
uniform float limit;
#endif
out vec4 oMask;
void main()
{
    ivec2 t = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(Ids, 0) - 1;
    int low = 2147483647, high = -2147483647 - 1, flagged = 0;
#ifdef NORMALS
    // Every normal of the nine tiles lies within `spread` (radians) of the centre tile's axis:
    // a tile's own cone plus the angle between its axis and that one.
    vec3 centre = normalize(texelFetch(Cone, t, 0).xyz);
    float spread = 0.0, shortest = 1.0, longest = 1.0;
#endif
    for (int y = -1; y <= 1; ++y)
        for (int x = -1; x <= 1; ++x) {
            ivec2 q = clamp(t + ivec2(x, y), ivec2(0), last);
            ivec4 s = texelFetch(Ids, q, 0);
            low = min(low, s.x);
            high = max(high, s.y);
            flagged |= s.z;
#ifdef NORMALS
            vec4 cone = texelFetch(Cone, q, 0);
            vec2 lengths = texelFetch(Length, q, 0).xy;
            shortest = min(shortest, lengths.x);
            longest = max(longest, lengths.y);
            float own = acos(clamp(cone.w, -1.0, 1.0));
            float between = acos(clamp(dot(normalize(cone.xyz), centre), -1.0, 1.0));
            spread = max(spread, own + between);
#endif
        }
    bool full = low != high;
#ifdef CONTOURS
    full = full && flagged != 0;
#endif
#ifdef NORMALS
    // Two normals within `spread` of one axis are at most twice that apart. NaN fails every
    // comparison here, and so marks the tile.
    bool cone = shortest >= 1.0 - UNIT && longest <= 1.0 + UNIT && 2.0 * spread <= 3.0 &&
                cos(2.0 * spread) >= limit + MARGIN;
    full = full || (low != 0 && !cone);
#endif
    oMask = vec4(full ? 1.0 : 0.0);
}
