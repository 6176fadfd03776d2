// FilterMinMax: the later rounds of a min-max reduction: (min, max) in r and g of "Image" over the
// block of texels that each target texel covers, the target being half the size (at least 1).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
out vec4 oColor;
void main()
{
    ivec2 source = textureSize(Image, 0);
    ivec2 target = max(source >> 1, ivec2(1));
    ivec2 p = ivec2(gl_FragCoord.xy);
    ivec2 first = p * source / target, last = ((p + 1) * source - 1) / target;
    vec2 range = vec2(3.0e38, -3.0e38);
    for (int y = first.y; y <= last.y; ++y)
        for (int x = first.x; x <= last.x; ++x) {
            vec2 v = texelFetch(Image, ivec2(x, y), 0).rg;
            range = vec2(min(range.x, v.x), max(range.y, v.y));
        }
    oColor = vec4(range, 0.0, 1.0);
}
