// FilterAdd3: the sum of three textures.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image0, Image1, Image2;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = texture(Image0, vUV) + texture(Image1, vUV) + texture(Image2, vUV); }
