// CompositFlat: one colour for every front face, the background where nothing was drawn.
// Back faces are left for "CompositFlatBack", which runs after it into the same target.
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
        oColor = ColorFront;
}
