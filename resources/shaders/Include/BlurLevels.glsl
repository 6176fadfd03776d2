// BlurLevels: the picture and its blurred copies, "Opaques" 0 (sharp) to 4 (most blurred), and
// the lookup between two neighbouring levels by a fractional level.
uniform sampler2D Opaques[5];
// GLSL 3.30 indexes sampler arrays by constants only.
vec4 level(int i, vec2 uv)
{
    if (i <= 0)
        return texture(Opaques[0], uv);
    if (i == 1)
        return texture(Opaques[1], uv);
    if (i == 2)
        return texture(Opaques[2], uv);
    if (i == 3)
        return texture(Opaques[3], uv);
    return texture(Opaques[4], uv);
}
vec4 blurred(vec2 uv, float r)
{
    int i = int(floor(r));
    return mix(level(i, uv), level(i + 1, uv), fract(r));
}
