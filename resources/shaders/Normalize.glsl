// Normalize: xyz of "Image" to unit length (a zero vector stays zero); w is kept.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 v = texture(Image, vUV);
    float len = length(v.xyz);
    oColor = vec4(len > 0.0 ? v.xyz / len : v.xyz, v.w);
}
