// CompositNormals: the view normal as colour, xyz from -1..1 to 0..1; the background is the
// colour of a normal facing the viewer.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform vec4 Background;
void main()
{
    oColor = IsEmpty(PixelFlags()) ? Background : vec4(PixelNormal() * 0.5 + 0.5, 1.0);
}
