// CompositColor: the albedo of the G-buffer, lit like "CompositShaded" where FLAG_LIT is set.
// Where nothing was drawn the colour target holds the background already, put there by the
// clear; with "Opaque" false (the transparent composite) such pixels come out empty instead,
// so that the mix with the opaque picture leaves them alone. GLOW: glowing and luminous
// surfaces add their light channel, scaled by "glowStrength".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform sampler2D Light;
uniform float glowStrength;
void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    int flags = PixelFlags();
    vec4 albedo;
    if (!MaterialPixel(flags, albedo))
        return;
    vec3 color = albedo.rgb;
    if (HasRenderFlag(flags, FLAG_LIT))
        color *= Lighting(PixelNormal());
#ifdef GLOW
    if (HasRenderFlag(flags, FLAG_COLOR_GLOWS) || HasRenderFlag(flags, FLAG_LUMINARY))
        color += texelFetch(Light, p, 0).rgb * glowStrength;
#endif
    oColor = vec4(color, albedo.a);
}
