// FilterMix: "Image0" and "Image1" mixed, "factor" 0 giving the first alone.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image0;
uniform sampler2D Image1;
uniform float factor;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = mix(texture(Image0, vUV), texture(Image1, vUV), factor); }
