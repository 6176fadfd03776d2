// BlurLevels: the picture and its blurred copies, "Opaques" 0 (sharp) to 4 (most blurred), and
// the lookup between two neighbouring levels by a fractional level.
uniform sampler2D Opaques[5];
// GLSL 3.30 indexes sampler arrays by constants only. Each level weighs by its distance from the
// fractional level, so that at most two count; every level is read without a branch: a software
// rasteriser would run every side of a per-pixel branch anyway, and explicit lods keep the
// lookups defined whatever the control flow.
// The blurred levels' part alone, without the picture (level 0).
vec4 blurredAbove(vec2 uv, float r)
{
    return max(0.0, 1.0 - abs(r - 1.0)) * textureLod(Opaques[1], uv, 0.0) +
           max(0.0, 1.0 - abs(r - 2.0)) * textureLod(Opaques[2], uv, 0.0) +
           max(0.0, 1.0 - abs(r - 3.0)) * textureLod(Opaques[3], uv, 0.0) +
           clamp(r - 3.0, 0.0, 1.0) * textureLod(Opaques[4], uv, 0.0);
}
vec4 blurred(vec2 uv, float r)
{
    return max(0.0, 1.0 - abs(r)) * textureLod(Opaques[0], uv, 0.0) + blurredAbove(uv, r);
}
