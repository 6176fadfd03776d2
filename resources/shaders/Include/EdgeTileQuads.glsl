// EdgeTileQuads: the vertex stage of the last pass of the edge and contour filters. Six vertices
// a tile, drawn as GL_TRIANGLES, make a quad over each tile that "Mask" (from EdgeTileMask)
// marks; the others collapse outside the clip volume, so that the fragments of the pass are
// those of the marked tiles alone. "size": the picture's size in pixels.
uniform sampler2D Mask;
uniform vec2 size;
void main()
{
    int tiles = textureSize(Mask, 0).x;
    int quad = gl_VertexID / 6, corner = gl_VertexID % 6;
    ivec2 tile = ivec2(quad % tiles, quad / tiles);
    if (texelFetch(Mask, tile, 0).x == 0.0) {
        gl_Position = vec4(-2.0, -2.0, 0.0, 1.0);
        return;
    }
    // Two triangles: (0, 0) (1, 0) (0, 1) and (1, 0) (1, 1) (0, 1).
    ivec2 offset = ivec2(corner == 1 || corner == 3 || corner == 4 ? 1 : 0, corner == 2 || corner >= 4 ? 1 : 0);
    vec2 xy = min(vec2((tile + offset) * TILE), size);
    gl_Position = vec4(2.0 * xy / size - 1.0, 0.0, 1.0);
}
