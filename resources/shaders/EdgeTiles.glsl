// EdgeTiles: the first pass of GLEdgeDetection and GLContour, one fragment per tile of TILE x
// TILE pixels (the tile beyond the picture's border repeats the border pixels). It sums up the
// tile for EdgeTileMask: the range of the object ids ("IDs".x) in oIds.xy, and with CONTOURS
// whether a pixel asks for contours ("Flags".w) in oIds.z. Without CONTOURS or IDS_ONLY, the
// cone of the normals ("Normal".xyz): in oCone its axis, the normal of the tile's first pixel,
// and the least dot product of a normal of the tile with it; in oLength the range of the
// normals' squared lengths. A NaN normal makes the least dot product -2: no cone.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/EdgeTile.glsl"
#if !defined(CONTOURS) && !defined(IDS_ONLY)
#define NORMALS
#endif
uniform isampler2D IDs;
layout(location = 0) out ivec4 oIds;
#ifdef CONTOURS
uniform sampler2D Flags;
#endif
#ifdef NORMALS
uniform sampler2D Normal;
layout(location = 1) out vec4 oCone;
layout(location = 2) out vec4 oLength;
#endif
void main()
{
    ivec2 first = ivec2(gl_FragCoord.xy) * TILE;
    ivec2 last = textureSize(IDs, 0) - 1;
    int low = 2147483647, high = -2147483647 - 1, flagged = 0;
#ifdef NORMALS
    vec3 axis = texelFetch(Normal, min(first, last), 0).xyz;
    float least = 1.0, shortest = 1.0, longest = 1.0;
#endif
    for (int y = 0; y < TILE; ++y)
        for (int x = 0; x < TILE; ++x) {
            ivec2 q = min(first + ivec2(x, y), last);
            int id = texelFetch(IDs, q, 0).x;
            low = min(low, id);
            high = max(high, id);
#ifdef CONTOURS
            flagged |= RenderFlagsFromFloat(texelFetch(Flags, q, 0).w) & FLAG_CONTOURS;
#endif
#ifdef NORMALS
            vec3 n = texelFetch(Normal, q, 0).xyz;
            float d = dot(n, axis), l = dot(n, n);
            least = min(least, d >= -2.0 ? d : -2.0); // NaN: -2, no cone
            shortest = min(shortest, l);
            longest = max(longest, l);
#endif
        }
    oIds = ivec4(low, high, flagged, 0);
#ifdef NORMALS
    oCone = vec4(axis, least);
    oLength = vec4(shortest, longest, 0.0, 0.0);
#endif
}
