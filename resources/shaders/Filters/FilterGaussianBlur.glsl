// FilterGaussianBlur: one pass of a 2D Gaussian of "sigma" texels over a square of "radius" texels
// each way (at most 8), its weights normalised to sum 1.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform float sigma;
uniform int radius;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec2 texel = 1.0 / vec2(textureSize(Image, 0));
    int r = clamp(radius, 0, 8);
    float k = -0.5 / max(sigma * sigma, 1e-6);
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int y = -r; y <= r; ++y)
        for (int x = -r; x <= r; ++x) {
            float w = exp(k * float(x * x + y * y));
            sum += w * texture(Image, vUV + vec2(x, y) * texel);
            total += w;
        }
    oColor = sum / total;
}
