// FilterMixDepth: of two pictures with their depths, the nearer one per pixel; "factor" is how
// much of the farther one shows through (0: none).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image0;
uniform sampler2D Depth0;
uniform sampler2D Image1;
uniform sampler2D Depth1;
uniform float factor;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 a = texture(Image0, vUV), b = texture(Image1, vUV);
    bool firstNearer = texture(Depth0, vUV).r <= texture(Depth1, vUV).r;
    oColor = firstNearer ? mix(a, b, factor) : mix(b, a, factor);
}
