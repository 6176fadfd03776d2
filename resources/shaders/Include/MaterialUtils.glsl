// MaterialUtils: the packed material (a uvec4, the same bits as the C++ Pbr) and its
// unpacked form. Word i holds channel i of colour-alpha in bits 31..19, channel i of
// light-thickness in bits 18..6, and six bits of rough (words 0 and 2) or metal (words 1
// and 3) in bits 5..0: rough = (w0 & 63) << 6 | (w2 & 63), metal = (w1 & 63) << 6 | (w3 & 63).
//
// Units: the plain forms are integer units (colour 8192 = 1.0, rough and metal 0..4095);
// the signed forms take 2048 off rough and metal (2048 = 1.0 after normalising); the
// normalised forms divide colour and light by 8192, rough and metal by 4096 (unsigned) or
// 2048 (signed). Encoders clamp each channel to its range and cut the fraction.
#ifndef VEL_MATERIAL_UTILS
#define VEL_MATERIAL_UTILS

void DecodeMaterialUnsigned(uvec4 m, out vec4 colorAlpha, out vec4 lightThick, out vec2 roughMetal)
{
    colorAlpha = vec4(m >> 19u);
    lightThick = vec4((m >> 6u) & 0x1FFFu);
    roughMetal = vec2(((m.x & 0x3Fu) << 6u) | (m.z & 0x3Fu), ((m.y & 0x3Fu) << 6u) | (m.w & 0x3Fu));
}

void DecodeMaterialSigned(uvec4 m, out vec4 colorAlpha, out vec4 lightThick, out vec2 roughMetal)
{
    DecodeMaterialUnsigned(m, colorAlpha, lightThick, roughMetal);
    roughMetal -= 2048.0;
}

void DecodeMaterialNormalizedUnsigned(uvec4 m, out vec4 colorAlpha, out vec4 lightThick, out vec2 roughMetal)
{
    DecodeMaterialUnsigned(m, colorAlpha, lightThick, roughMetal);
    colorAlpha /= 8192.0;
    lightThick /= 8192.0;
    roughMetal /= 4096.0;
}

void DecodeMaterialNormalizedSigned(uvec4 m, out vec4 colorAlpha, out vec4 lightThick, out vec2 roughMetal)
{
    DecodeMaterialUnsigned(m, colorAlpha, lightThick, roughMetal);
    colorAlpha /= 8192.0;
    lightThick /= 8192.0;
    roughMetal = (roughMetal - 2048.0) / 2048.0;
}

uvec4 EncodeMaterialUnsigned(vec4 colorAlpha, vec4 lightThick, vec2 roughMetal)
{
    uvec4 c = uvec4(clamp(colorAlpha, 0.0, 8191.0));
    uvec4 l = uvec4(clamp(lightThick, 0.0, 8191.0));
    uvec2 rm = uvec2(clamp(roughMetal, 0.0, 4095.0));
    uvec4 pieces = uvec4(rm.x >> 6u, rm.y >> 6u, rm.x & 0x3Fu, rm.y & 0x3Fu);
    return (c << 19u) | (l << 6u) | pieces;
}

uvec4 EncodeMaterialSigned(vec4 colorAlpha, vec4 lightThick, vec2 roughMetal)
{
    return EncodeMaterialUnsigned(colorAlpha, lightThick, roughMetal + 2048.0);
}

uvec4 EncodeMaterialNormalizedUnsigned(vec4 colorAlpha, vec4 lightThick, vec2 roughMetal)
{
    return EncodeMaterialUnsigned(colorAlpha * 8192.0, lightThick * 8192.0, roughMetal * 4096.0);
}

uvec4 EncodeMaterialNormalizedSigned(vec4 colorAlpha, vec4 lightThick, vec2 roughMetal)
{
    return EncodeMaterialUnsigned(colorAlpha * 8192.0, lightThick * 8192.0, roughMetal * 2048.0 + 2048.0);
}

#endif
