// Copy: level 0 of the texture "Image" onto the whole target. GREY_MAX: grey from the largest channel.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 c = textureLod(Image, vUV, 0.0);
#ifdef GREY_MAX
    float grey = max(c.r, max(c.g, c.b));
    c = vec4(grey, grey, grey, c.a);
#endif
    oColor = c;
}
