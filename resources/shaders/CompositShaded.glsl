// CompositShaded: grey clay lit by a light fixed to the camera, with an ambient floor, on
// front faces; the background elsewhere. Back faces are left for "CompositShadedBack".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform vec4 Background;
uniform vec4 ColorFront;
void main()
{
    if (FrontFace(Background))
        oColor = vec4(ColorFront.rgb * Lighting(PixelNormal()), ColorFront.a);
}
