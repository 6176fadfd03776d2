// FilterThreshold: the pixels of "Image" whose brightest channel is above "threshold"; the rest black.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform float threshold;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 c = texture(Image, vUV);
    oColor = max(c.r, max(c.g, c.b)) > threshold ? c : vec4(0.0);
}
