// SSAO: ambient occlusion in screen space: the picture "Image" darkened by the occlusion that
// the samples of ScreenSpaceGather find, times the strength "PARAMETERS".z. A zero strength, an
// open plane and the background keep the picture as it is.
// GATHER: only the occlusion, into r of a target at 1 / "Reduction" of the depth's size, with the
// view depth it was gathered for in a.
// APPLY: the factor 1 - strength * occlusion, the occlusion upsampled by depth
// (Include/Upsample), to multiply the picture by blending.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define SCALE 0.4
#define BIAS 0.05
#define MAX_DISTANCE 0.2
#include ":/shaders/Include/ScreenSpace.glsl"
#ifdef APPLY
#include ":/shaders/Include/Upsample.glsl"
void main()
{
    vec4 value;
    oColor = GatheredAt(ivec2(gl_FragCoord.xy), value) ? vec4(vec3(1.0 - PARAMETERS.z * value.r), 1.0) : vec4(1.0);
}
#else
#include ":/shaders/Include/ScreenSpaceGather.glsl"
void main()
{
    Gathered g = Gather();
    // Twice the mean: a crease of two perpendicular planes comes out at about half the light.
    float occlusion = clamp(2.0 * g.weight / float(g.samples), 0.0, 1.0);
#ifdef GATHER
    oColor = vec4(occlusion, 0.0, 0.0, g.z);
#else
    vec4 c = texelFetch(Image, ivec2(gl_FragCoord.xy), 0);
    oColor = vec4(c.rgb * (1.0 - PARAMETERS.z * occlusion), c.a);
#endif
}
#endif
