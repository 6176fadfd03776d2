// CompositShadedBack: back faces (FLAG_FLIPPED) lit as "CompositShaded" lights front faces,
// in their own colour; every other pixel stays as it was.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform vec4 ColorBack;
void main()
{
    if (BackFace())
        oColor = vec4(ColorBack.rgb * Lighting(PixelNormal()), ColorBack.a);
}
