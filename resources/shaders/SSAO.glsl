// SSAO: ambient occlusion in screen space: the picture "Image" darkened by the occlusion that
// the samples of ScreenSpaceGather find, times the strength "PARAMETERS".z. A zero strength, an
// open plane and the background keep the picture as it is.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define SCALE 0.4
#define BIAS 0.05
#define MAX_DISTANCE 0.2
#include ":/shaders/Include/ScreenSpace.glsl"
#include ":/shaders/Include/ScreenSpaceGather.glsl"
void main()
{
    vec4 c = texelFetch(Image, ivec2(gl_FragCoord.xy), 0);
    Gathered g = Gather();
    // Twice the mean: a crease of two perpendicular planes comes out at about half the light.
    float occlusion = clamp(2.0 * g.weight / float(g.samples), 0.0, 1.0);
    oColor = vec4(c.rgb * (1.0 - PARAMETERS.z * occlusion), c.a);
}
