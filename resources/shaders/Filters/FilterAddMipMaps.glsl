// FilterAddMipMaps: the sum of the mip levels 0 to "level" of "Image".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform int level;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 sum = vec4(0.0);
    for (int l = 0; l <= level; ++l)
        sum += textureLod(Image, vUV, float(l));
    oColor = sum;
}
