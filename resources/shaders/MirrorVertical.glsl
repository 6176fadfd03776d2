// MirrorVertical: "Image" upside down.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = textureLod(Image, vec2(vUV.x, 1.0 - vUV.y), 0.0); }
