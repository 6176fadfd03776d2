// FilterAdd2MipMaps: the sum of the mip levels 0 to "level" of "Image0" and of "Image1".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image0;
uniform sampler2D Image1;
uniform int level;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 sum = vec4(0.0);
    for (int l = 0; l <= level; ++l)
        sum += textureLod(Image0, vUV, float(l)) + textureLod(Image1, vUV, float(l));
    oColor = sum;
}
