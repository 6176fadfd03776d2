// FilterBlur: one axis of a separable blur, along "delta" (in texels of "Image"): binomial weights
// 1 4 6 4 1; SIMPLE: 1 2 1. The weights sum to 1, so a constant picture stays as it is.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform ivec2 delta;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec2 d = vec2(delta) / vec2(textureSize(Image, 0));
#ifdef SIMPLE
    oColor = 0.25 * (texture(Image, vUV - d) + texture(Image, vUV + d)) + 0.5 * texture(Image, vUV);
#else
    oColor = (texture(Image, vUV - 2.0 * d) + texture(Image, vUV + 2.0 * d)) * 0.0625 +
             (texture(Image, vUV - d) + texture(Image, vUV + d)) * 0.25 + texture(Image, vUV) * 0.375;
#endif
}
