// FilterMedian: per channel, the median of the (2 size + 1)^2 texels around each one (size 0 to 2);
// source and target are of one size. Edges repeat the border texels.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform int size;
out vec4 oColor;
void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(Image, 0) - 1;
    int r = clamp(size, 0, 2);
    vec4 v[25];
    int n = 0;
    for (int y = -r; y <= r; ++y)
        for (int x = -r; x <= r; ++x)
            v[n++] = texelFetch(Image, clamp(p + ivec2(x, y), ivec2(0), last), 0);
    // Compare-exchange by min and max sorts each channel on its own; the middle is enough.
    for (int i = 0; i <= n / 2; ++i)
        for (int j = i + 1; j < n; ++j) {
            vec4 a = v[i], b = v[j];
            v[i] = min(a, b);
            v[j] = max(a, b);
        }
    oColor = v[n / 2];
}
