// FilterMul: "Image" times the vector "factor"; MUL2: the product of "Image0" and "Image1".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#ifdef MUL2
uniform sampler2D Image0;
uniform sampler2D Image1;
#else
uniform sampler2D Image;
uniform vec4 factor;
#endif
in vec2 vUV;
out vec4 oColor;
void main()
{
#ifdef MUL2
    oColor = texture(Image0, vUV) * texture(Image1, vUV);
#else
    oColor = texture(Image, vUV) * factor;
#endif
}
