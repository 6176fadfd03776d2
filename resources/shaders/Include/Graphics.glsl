// Graphics: colour spaces, tone curves, normal packing and the terms of the PBR light model.
#ifndef VEL_GRAPHICS
#define VEL_GRAPHICS

#define GRAPHICS_PI 3.14159265358979323846

float luminance(vec3 c)
{
    return dot(c, vec3(0.2126, 0.7152, 0.0722));
}

vec3 linearToSRGB(vec3 c)
{
    vec3 low = c * 12.92;
    vec3 high = 1.055 * pow(max(c, vec3(0.0)), vec3(1.0 / 2.4)) - 0.055;
    return mix(high, low, vec3(lessThanEqual(c, vec3(0.0031308))));
}

vec3 sRGBToLinear(vec3 c)
{
    vec3 low = c / 12.92;
    vec3 high = pow((max(c, vec3(0.0)) + 0.055) / 1.055, vec3(2.4));
    return mix(high, low, vec3(lessThanEqual(c, vec3(0.04045))));
}

vec3 gammaCorrect(vec3 c, float gamma)
{
    return pow(max(c, vec3(0.0)), vec3(1.0 / gamma));
}

// Reinhard's curve on luminance, keeping the hue.
vec3 tonemapReinhard(vec3 c)
{
    float l = luminance(c);
    return c / (1.0 + l);
}

// A rational fit of a filmic curve: toe, shoulder, white near 10.
vec3 tonemapFilmic(vec3 c)
{
    vec3 x = max(c, vec3(0.0));
    return clamp((x * (2.51 * x + 0.03)) / (x * (2.43 * x + 0.59) + 0.14), 0.0, 1.0);
}

// Unit normal to two components and back, by folding the octahedron.
vec2 octahedronEncode(vec3 n)
{
    n /= abs(n.x) + abs(n.y) + abs(n.z);
    vec2 p = n.xy;
    if (n.z < 0.0)
        p = (1.0 - abs(n.yx)) * vec2(p.x >= 0.0 ? 1.0 : -1.0, p.y >= 0.0 ? 1.0 : -1.0);
    return p;
}

vec3 octahedronDecode(vec2 p)
{
    vec3 n = vec3(p, 1.0 - abs(p.x) - abs(p.y));
    if (n.z < 0.0)
        n.xy = (1.0 - abs(n.yx)) * vec2(n.x >= 0.0 ? 1.0 : -1.0, n.y >= 0.0 ? 1.0 : -1.0);
    return normalize(n);
}

// Schlick's approximation of the Fresnel factor.
vec3 fresnelSchlick(float cosTheta, vec3 f0)
{
    return f0 + (1.0 - f0) * pow(clamp(1.0 - cosTheta, 0.0, 1.0), 5.0);
}

// The same with the reflection of rough surfaces held below 1 - roughness at grazing angles.
vec3 fresnelSchlickRoughness(float cosTheta, vec3 f0, float roughness)
{
    return f0 + (max(vec3(1.0 - roughness), f0) - f0) * pow(clamp(1.0 - cosTheta, 0.0, 1.0), 5.0);
}

// Trowbridge-Reitz (GGX) distribution of micro-normals, with alpha = roughness squared.
float distributionGGX(float NdotH, float roughness)
{
    float a = roughness * roughness;
    float a2 = a * a;
    float d = NdotH * NdotH * (a2 - 1.0) + 1.0;
    return a2 / max(GRAPHICS_PI * d * d, 1e-7);
}

// Smith's shadowing with Schlick's G1, k for direct light.
float geometrySchlickGGX(float NdotX, float roughness)
{
    float r = roughness + 1.0;
    float k = r * r / 8.0;
    return NdotX / (NdotX * (1.0 - k) + k);
}

float geometrySmith(float NdotV, float NdotL, float roughness)
{
    return geometrySchlickGGX(max(NdotV, 0.0), roughness) * geometrySchlickGGX(max(NdotL, 0.0), roughness);
}

// The texture coordinate of a matcap for a view-space normal.
vec2 matcapUV(vec3 viewNormal)
{
    return viewNormal.xy * 0.495 + 0.5;
}

// A two-colour checker of `cells` squares per unit.
float checker(vec2 uv, float cells)
{
    vec2 c = floor(uv * cells);
    return mod(c.x + c.y, 2.0);
}

#endif
