// FilterThresholdMul: the bloom source: what FilterThreshold keeps, times "factor".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform float threshold;
uniform float factor;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 c = texture(Image, vUV);
    oColor = max(c.r, max(c.g, c.b)) > threshold ? c * factor : vec4(0.0);
}
