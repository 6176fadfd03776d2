// FilterAddFactor: "Image0" + "factor" times "Image1".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image0;
uniform sampler2D Image1;
uniform float factor;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = texture(Image0, vUV) + factor * texture(Image1, vUV); }
