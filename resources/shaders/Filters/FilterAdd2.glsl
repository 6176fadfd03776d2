// FilterAdd2: the sum of two textures, each sampled over the whole target whatever its size.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image0, Image1;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = texture(Image0, vUV) + texture(Image1, vUV); }
