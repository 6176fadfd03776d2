// SSSS: subsurface light in screen space: near surfaces facing each other bleed their colour
// into one another. The loop of ScreenSpaceGather with a short reach and no bias gathers the
// picture's colour, and the mean, times the strength "PARAMETERS".z, is added.
// GATHER: only the mean colour, into rgb of a target at 1 / "Reduction" of the depth's size, with
// the view depth it was gathered for in a.
// APPLY: strength times that colour, upsampled by depth (Include/Upsample), to add to the
// picture by blending.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define SCALE 0.1
#define BIAS 0.0
#define MAX_DISTANCE 0.05
#define GATHER_COLOR
#include ":/shaders/Include/ScreenSpace.glsl"
#ifdef APPLY
#include ":/shaders/Include/Upsample.glsl"
void main()
{
    vec4 value;
    oColor = GatheredAt(ivec2(gl_FragCoord.xy), value) ? vec4(PARAMETERS.z * value.rgb, 0.0) : vec4(0.0);
}
#else
#include ":/shaders/Include/ScreenSpaceGather.glsl"
void main()
{
    Gathered g = Gather();
#ifdef GATHER
    oColor = vec4(g.color / float(g.samples), g.z);
#else
    vec4 c = texelFetch(Image, ivec2(gl_FragCoord.xy), 0);
    oColor = vec4(c.rgb + PARAMETERS.z * g.color / float(g.samples), c.a);
#endif
}
#endif
