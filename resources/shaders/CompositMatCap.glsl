// CompositMatCap: the material capture "iMatCap" looked up by the view normal, tinted by
// "ColorFront", on front faces. BACKFACE: the same on back faces (FLAG_FLIPPED) with the
// normal turned towards the viewer, and every other pixel left alone.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform sampler2D iMatCap;
uniform vec4 ColorFront;
uniform vec4 Background;
void main()
{
    vec3 n = PixelNormal();
#ifdef BACKFACE
    BackFace();
    n = n.z < 0.0 ? -n : n;
#else
    if (!FrontFace(Background))
        return;
#endif
    oColor = vec4(texture(iMatCap, n.xy * 0.5 + 0.5).rgb * ColorFront.rgb, 1.0);
}
