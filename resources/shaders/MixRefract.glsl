// MixRefract: the transparent composite over the opaque one. Where the transparent picture has
// alpha, the opaque picture is looked up displaced by the surface normal, "Refraction" (the
// thickness channel, in its alpha) times "wh" times normal.xy, and taken from the pre-blurred
// levels "Opaques" (0 sharp to 4 most blurred) by sqrt(roughness) * 4, blending the two
// neighbouring levels; the result is mix(opaque, transparent, alpha) with alpha 1.
// CHROMA: red and blue are displaced by (1 -+ "chroma") times the offset, a lens shift per
// channel. GLOW: the light channel of the transparent surfaces is added unattenuated.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/BlurLevels.glsl"
#include ":/shaders/Include/MixRefractMix.glsl"
