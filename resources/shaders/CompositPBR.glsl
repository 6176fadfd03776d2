// CompositPBR: image-based light from the environment cube "sky" and the split-sum table
// "brdfLUT". Per pixel, with roughness and metalness clamped to 0.02..0.98:
//   F0 = mix(0.04, albedo, metalness); F = F0 - F0 (1 - NV)^5, which vanishes at grazing
//   angles (on purpose, unlike Schlick); diffuse from the coarsest level "levels" of the
//   cube; specular from the level roughness * levels along the reflection, times
//   F brdf.x + brdf.y; alpha mix(albedo.a, 1, mean of F).
// Unlit pixels show their albedo; curves come out pure green, for the contour pass to
// recolour. GLOW: glowing and luminous surfaces add their light channel.
// "whLens" is half the width, half the height and the lens distance in pixels (0 for an
// orthographic camera); "rotation" turns view directions into the cube's world directions.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#include ":/shaders/Include/Composit.glsl"
uniform sampler2D Material; // roughness, metalness
uniform sampler2D Light;
uniform samplerCube sky;
uniform sampler2D brdfLUT;
uniform float levels;
uniform mat3 rotation;
uniform vec3 whLens;
uniform float glowStrength;
void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    int flags = PixelFlags();
    vec4 albedo;
    if (!MaterialPixel(flags, albedo))
        return;
    if (RenderObjectType(flags) == VALUE_CURVE) {
        oColor = vec4(0.0, 1.0, 0.0, 1.0);
        return;
    }
    vec3 color = albedo.rgb;
    float alpha = albedo.a;
    if (HasRenderFlag(flags, FLAG_LIT)) {
        vec3 N = normalize(PixelNormal());
        vec3 V = whLens.z > 0.0 ? normalize(vec3(whLens.xy - gl_FragCoord.xy, whLens.z)) : vec3(0.0, 0.0, 1.0);
        if (dot(N, V) < 0.0)
            N = -N;
        float NV = clamp(dot(N, V), 0.0, 1.0);
        vec2 roughMetal = clamp(texelFetch(Material, p, 0).xy, 0.02, 0.98);
        float roughness = roughMetal.x;
        float metalness = roughMetal.y;
        vec3 F0 = mix(vec3(0.04), albedo.rgb, metalness);
        vec3 F = F0 - F0 * pow(1.0 - NV, 5.0);
        vec3 kD = (1.0 - F) * (1.0 - metalness);
        vec3 irradiance = textureLod(sky, rotation * N, levels).rgb;
        vec3 R = reflect(-V, N);
        vec3 prefiltered = textureLod(sky, rotation * R, roughness * levels).rgb;
        vec2 brdf = texture(brdfLUT, vec2(NV, roughness)).rg;
        color = kD * irradiance * albedo.rgb + prefiltered * (F * brdf.x + brdf.y);
        alpha = mix(albedo.a, 1.0, (F.r + F.g + F.b) / 3.0);
    }
#ifdef GLOW
    if (HasRenderFlag(flags, FLAG_COLOR_GLOWS) || HasRenderFlag(flags, FLAG_LUMINARY))
        color += texelFetch(Light, p, 0).rgb * glowStrength;
#endif
    oColor = vec4(color, alpha);
}
