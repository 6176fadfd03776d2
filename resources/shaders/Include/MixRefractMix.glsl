// MixRefractMix: the fragment stage of "MixRefract" and "MixRefractTestOpaque" (with
// TEST_OPAQUE: the displaced, blurred opaque picture alone); see "MixRefract". The including
// file includes BlurLevels first.
uniform sampler2D Transparent;
uniform sampler2D OpaqueDepth;
uniform sampler2D TransparentDepth;
uniform sampler2D Refraction; // thickness in alpha
uniform sampler2D Normal;     // view normals of the transparent surfaces
uniform sampler2D Material;   // roughness, metalness of the transparent surfaces
uniform sampler2D Light;
uniform vec2 wh;              // the displacement of a unit normal at unit thickness, in texture units
uniform float chroma;
uniform float glowStrength;
in vec2 vUV;
out vec4 oColor;
void main()
{
    // A transparent surface behind the opaque one is hidden by it.
    bool visible = texture(TransparentDepth, vUV).r < texture(OpaqueDepth, vUV).r;
    float alpha = texture(Transparent, vUV).a;
    // Sampled outside the choice: implicit derivatives are undefined in non-uniform control flow.
    vec2 bend = texture(Refraction, vUV).a * wh * texture(Normal, vUV).xy;
    vec2 N = alpha > 0.0 && visible ? bend : vec2(0.0);
    float r = sqrt(clamp(texture(Material, vUV).r, 0.0, 1.0)) * 4.0;
    r = alpha > 0.0 && visible ? r : 0.0;
    vec4 opaque = blurred(vUV - N, r);
#ifdef CHROMA
    opaque.r = blurred(vUV - N * (1.0 - chroma), r).r;
    opaque.b = blurred(vUV - N * (1.0 + chroma), r).b;
#endif
#ifdef TEST_OPAQUE
    oColor = vec4(opaque.rgb, 1.0);
#else
    vec4 front = texture(Transparent, vUV);
    front.a *= float(visible);
#ifdef GLOW
    opaque.rgb += texture(Light, vUV).rgb * glowStrength * front.a;
#endif
    oColor = vec4(mix(opaque.rgb, front.rgb, front.a), 1.0);
#endif
}
