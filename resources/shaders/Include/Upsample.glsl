// Upsample: a full-size pixel's value from "Gathered", a picture gathered at 1 / "Reduction" of
// the size, where texel t was gathered for the depth texel t * "Reduction" and keeps that texel's
// view depth in a (0: the background). The four nearest gathered texels count by their bilinear
// weight divided by how far their depth lies from the pixel's own (relative to it), so that the
// value of one surface does not bleed onto another across a silhouette. Texels of the background
// count nothing; with none left the value is 0. Every tap is read without a branch: a software
// rasteriser runs both sides of a per-pixel branch anyway. GatheredAt() serves the APPLY stage of
// "SSAO" and "SSSS", which read no picture: their output is blended over it. The including file
// includes ScreenSpace first.
uniform sampler2D Gathered;
uniform int Reduction;
vec4 Upsampled(ivec2 pixel, float z)
{
    ivec2 last = textureSize(Gathered, 0) - 1;
    vec2 h = (vec2(pixel) + 0.5) / float(Reduction) - 0.5;
    ivec2 base = ivec2(floor(h));
    vec2 f = h - vec2(base);
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 2; ++i) {
            vec4 g = texelFetch(Gathered, clamp(base + ivec2(i, j), ivec2(0), last), 0);
            float bilinear = (i == 0 ? 1.0 - f.x : f.x) * (j == 0 ? 1.0 - f.y : f.y);
            float w = g.a == 0.0 ? 0.0 : bilinear / (1e-3 + abs(g.a - z) / max(abs(z), 1e-6));
            sum += w * g;
            total += w;
        }
    return total > 0.0 ? sum / total : vec4(0.0);
}

uniform mat4 ProjectionMatrixInv;
uniform sampler2D Depth;
uniform vec3 PARAMETERS; // samples, radius, strength
out vec4 oColor;

// The gathered value at `pixel`; false where the picture stays as it is: on the background and
// at zero strength.
bool GatheredAt(ivec2 pixel, out vec4 value)
{
    value = vec4(0.0);
    float d = texelFetch(Depth, pixel, 0).r;
    if (d >= 1.0 || PARAMETERS.z == 0.0)
        return false;
    float z = ViewPosition(ProjectionMatrixInv, (vec2(pixel) + 0.5) / vec2(textureSize(Depth, 0)), d).z;
    value = Upsampled(pixel, z);
    return true;
}
