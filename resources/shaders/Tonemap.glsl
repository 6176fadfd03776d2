// Tonemap: "Image" times the exposure, through a tone curve, then to the power 1 / gamma:
// "InvGamma_Exposure" holds 1 / gamma in rgb and the exposure in a. Without TONEMAP the curve is
// the identity; with it, REINHARD x / (1 + x) (which c / (1.001 - c) undoes when the background
// is cleared), UNCHARTED2 the filmic curve normalised by its white point W, or ACES the fit of
// the ACES reference curve. Alpha is kept.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform vec4 InvGamma_Exposure;
in vec2 vUV;
out vec4 oColor;
#ifdef UNCHARTED2
const float A = 0.15;
const float B = 0.50;
const float C = 0.10;
const float D = 0.20;
const float E = 0.02;
const float F = 0.30;
const float W = 11.2;
vec3 Uncharted2(vec3 x)
{
    return ((x * (A * x + C * B) + D * E) / (x * (A * x + B) + D * F)) - E / F;
}
#endif
vec3 Curve(vec3 x)
{
#if defined(TONEMAP) && defined(UNCHARTED2)
    return Uncharted2(x) / Uncharted2(vec3(W));
#elif defined(TONEMAP) && defined(ACES)
    const float a = 2.51;
    const float b = 0.03;
    const float c = 2.43;
    const float d = 0.59;
    const float e = 0.14;
    return clamp((x * (a * x + b)) / (x * (c * x + d) + e), 0.0, 1.0);
#elif defined(TONEMAP) && defined(REINHARD)
    return x / (1.0 + x);
#else
    return x;
#endif
}
void main()
{
    vec4 c = texture(Image, vUV);
    vec3 x = max(c.rgb * InvGamma_Exposure.a, vec3(0.0));
    // The filmic curve is 0 at 0 only up to rounding, and pow of a negative base is undefined.
    oColor = vec4(pow(max(Curve(x), vec3(0.0)), InvGamma_Exposure.rgb), c.a);
}
