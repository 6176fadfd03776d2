// SSSS: subsurface light in screen space: near surfaces facing each other bleed their colour
// into one another. The loop of ScreenSpaceGather with a short reach and no bias gathers the
// picture's colour, and the mean, times the strength "PARAMETERS".z, is added.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define SCALE 0.1
#define BIAS 0.0
#define MAX_DISTANCE 0.05
#define GATHER_COLOR
#include ":/shaders/Include/ScreenSpace.glsl"
#include ":/shaders/Include/ScreenSpaceGather.glsl"
void main()
{
    vec4 c = texelFetch(Image, ivec2(gl_FragCoord.xy), 0);
    Gathered g = Gather();
    oColor = vec4(c.rgb + PARAMETERS.z * g.color / float(g.samples), c.a);
}
