// CompositFlatBack: back faces (FLAG_FLIPPED) in their own colour; every other pixel stays
// as "CompositFlat" left it.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform vec4 ColorBack;
void main()
{
    if (BackFace())
        oColor = ColorBack;
}
