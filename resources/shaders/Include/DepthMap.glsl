// DepthMap: the main of "DepthMapPerspective" and "DepthMapOrthogonal", which define
// EyeDistance(depth) for their projection: grey 0 at "Range".x, 1 at "Range".y, the
// background where nothing was drawn.
uniform sampler2D Depth;
uniform vec2 Range;
uniform vec4 Background;
out vec4 oColor;
void main()
{
    float d = texelFetch(Depth, ivec2(gl_FragCoord.xy), 0).r;
    if (d >= 1.0) {
        oColor = Background;
        return;
    }
    float grey = clamp((EyeDistance(d) - Range.x) / max(Range.y - Range.x, 1e-6), 0.0, 1.0);
    oColor = vec4(vec3(grey), 1.0);
}
