// FilterClamp: "Image" clamped to 0..1.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = clamp(texture(Image, vUV), 0.0, 1.0); }
