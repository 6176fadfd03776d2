// ObjectType: tints curves, bones and rigid bodies by the type field of their render flags,
// mixed over the picture by alpha blending; every other pixel is discarded.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
void main()
{
    int type = RenderObjectType(PixelFlags());
    if (type == VALUE_CURVE)
        oColor = vec4(0.1, 0.9, 0.2, 0.5);
    else if (type == VALUE_BONE)
        oColor = vec4(0.9, 0.8, 0.2, 0.5);
    else if (type == VALUE_RB_STATIC)
        oColor = vec4(0.3, 0.4, 0.9, 0.4);
    else if (type == VALUE_RB_DYNAMIC)
        oColor = vec4(0.9, 0.3, 0.2, 0.4);
    else
        discard;
}
