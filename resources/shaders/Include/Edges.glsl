// Edges: the last pass of "EdgeDetection" and "SimpleEdgeDetection" (with IDS_ONLY), drawn over
// the picture in place with alpha masked off. A pixel whose object id ("IDs".x) differs from
// one of its four neighbours', or, unless IDS_ONLY, whose normal ("Normal") turns from a
// neighbour's by more than the angle whose cosine is "limit", is an edge and turns black (the
// background, id 0, has no normals to compare); every other pixel is discarded. Borders repeat
// the border pixels. It runs on the tiles of EdgeTileQuads alone: the others hold no edge.
uniform isampler2D IDs;
uniform sampler2D Normal;
uniform float limit;
out vec4 oColor;
void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(IDs, 0) - 1;
    int id = texelFetch(IDs, p, 0).x;
    vec3 n = texelFetch(Normal, p, 0).xyz;
    bool edge = false;
    ivec2 steps[4] = ivec2[4](ivec2(1, 0), ivec2(-1, 0), ivec2(0, 1), ivec2(0, -1));
    for (int i = 0; i < 4; ++i) {
        ivec2 q = clamp(p + steps[i], ivec2(0), last);
        edge = edge || texelFetch(IDs, q, 0).x != id;
#ifndef IDS_ONLY
        edge = edge || (id != 0 && dot(n, texelFetch(Normal, q, 0).xyz) < limit);
#endif
    }
    if (!edge)
        discard;
    oColor = vec4(0.0, 0.0, 0.0, 1.0);
}
