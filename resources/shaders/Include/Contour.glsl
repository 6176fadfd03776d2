// Contour: the last pass of "Contour" and "ContourWire" (with WIRE), drawn over the picture in
// place with alpha masked off. Objects whose render flags ("Flags".w, carried in float bits)
// hold FLAG_CONTOURS get an outline "width" pixels wide (at most 4): a pixel is on it when a
// pixel within that distance belongs to another object (or to none) and one of the two has the
// flag. WIRE, for wireframe pictures whose lines would each be outlined: only pixels where
// nothing was drawn take the outline, so the lines thicken. The outline is "ContourColor";
// every other pixel is discarded. It runs on the tiles of EdgeTileQuads alone: the others are
// near no outline. The including file includes RenderFlags first.
uniform isampler2D IDs;
uniform sampler2D Flags;
uniform float width;
uniform vec4 ContourColor;
out vec4 oColor;
bool Outlined(ivec2 p)
{
    return HasRenderFlag(RenderFlagsFromFloat(texelFetch(Flags, p, 0).w), FLAG_CONTOURS);
}
void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(IDs, 0) - 1;
    int id = texelFetch(IDs, p, 0).x;
#ifdef WIRE
    if (id != 0)
        discard;
#endif
    bool mine = Outlined(p);
    int r = int(ceil(clamp(width, 0.0, 4.0)));
    float r2 = width * width;
    for (int y = -r; y <= r; ++y)
        for (int x = -r; x <= r; ++x) {
            if (float(x * x + y * y) > r2)
                continue;
            ivec2 q = clamp(p + ivec2(x, y), ivec2(0), last);
            // The flags first: most pixels are near no outlined object, and need no id.
            if ((mine || Outlined(q)) && texelFetch(IDs, q, 0).x != id) {
                oColor = vec4(ContourColor.rgb, 1.0);
                return;
            }
        }
    discard;
}
