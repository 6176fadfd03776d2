// FilterAdd: "Image" plus the vector "addend".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform vec4 addend;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = texture(Image, vUV) + addend; }
