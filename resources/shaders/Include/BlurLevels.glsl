// BlurLevels: the picture and its blurred copies, "Opaques" 0 (sharp) to 4 (most blurred), and
// the lookup between two neighbouring levels by a fractional level.
uniform sampler2D Opaques[5];
// GLSL 3.30 indexes sampler arrays by constants only. The level is chosen per pixel, so the
// lookups sit in non-uniform control flow, where implicit derivatives are undefined: level 0 is
// named (the picture may have mipmaps).
vec4 level(int i, vec2 uv)
{
    if (i <= 0)
        return textureLod(Opaques[0], uv, 0.0);
    if (i == 1)
        return textureLod(Opaques[1], uv, 0.0);
    if (i == 2)
        return textureLod(Opaques[2], uv, 0.0);
    if (i == 3)
        return textureLod(Opaques[3], uv, 0.0);
    return textureLod(Opaques[4], uv, 0.0);
}
vec4 blurred(vec2 uv, float r)
{
    int i = int(floor(r));
    return mix(level(i, uv), level(i + 1, uv), fract(r));
}
