// FilterMinMaxDepthOnly: the first round of a min-max reduction: the first channel of "Image" (a
// depth or any texture) over the block of texels that each target texel covers, as (min, max) in
// r and g. Values at or above "background" are not counted; a block of none gives (+big, -big).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform float background;
out vec4 oColor;
void main()
{
    ivec2 source = textureSize(Image, 0);
    ivec2 target = max(source >> 1, ivec2(1));
    ivec2 p = ivec2(gl_FragCoord.xy);
    // An odd size leaves a third texel to the last block.
    ivec2 first = p * source / target, last = ((p + 1) * source - 1) / target;
    vec2 range = vec2(3.0e38, -3.0e38);
    for (int y = first.y; y <= last.y; ++y)
        for (int x = first.x; x <= last.x; ++x) {
            float v = texelFetch(Image, ivec2(x, y), 0).r;
            if (v < background)
                range = vec2(min(range.x, v), max(range.y, v));
        }
    oColor = vec4(range, 0.0, 1.0);
}
