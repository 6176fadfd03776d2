// MixRefractTestOpaque: what "MixRefract" sees behind the transparent surfaces, the displaced
// and blurred opaque picture alone, without the transparent colour over it.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#define TEST_OPAQUE
#include ":/shaders/Include/BlurLevels.glsl"
#include ":/shaders/Include/MixRefractMix.glsl"
