// Upsample: a full-size pixel's value from "Gathered", a picture gathered at 1 / "Reduction" of
// the size, where texel t was gathered for the depth texel t * "Reduction". The four nearest
// gathered texels count by their bilinear weight divided by how far their depth lies from the
// pixel's own (relative to it), so that the value of one surface does not bleed onto another
// across a silhouette. Texels of the background count nothing; with none left the value is 0.
// PictureAndGathered() serves the APPLY stage of "SSAO" and "SSSS". The including file includes
// ScreenSpace first.
uniform sampler2D Gathered;
uniform int Reduction;
vec4 Upsampled(sampler2D depthMap, mat4 screenToView, ivec2 pixel, float z)
{
    ivec2 size = textureSize(depthMap, 0);
    ivec2 last = textureSize(Gathered, 0) - 1;
    vec2 h = (vec2(pixel) + 0.5) / float(Reduction) - 0.5;
    ivec2 base = ivec2(floor(h));
    vec2 f = h - vec2(base);
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 2; ++i) {
            ivec2 t = clamp(base + ivec2(i, j), ivec2(0), last);
            ivec2 q = min(t * Reduction, size - 1);
            float d = texelFetch(depthMap, q, 0).r;
            if (d >= 1.0)
                continue;
            float zt = ViewPosition(screenToView, (vec2(q) + 0.5) / vec2(size), d).z;
            float bilinear = (i == 0 ? 1.0 - f.x : f.x) * (j == 0 ? 1.0 - f.y : f.y);
            float w = bilinear / (1e-3 + abs(zt - z) / max(abs(z), 1e-6));
            sum += w * texelFetch(Gathered, t, 0);
            total += w;
        }
    return total > 0.0 ? sum / total : vec4(0.0);
}

uniform mat4 ProjectionMatrixInv;
uniform sampler2D Image;
uniform sampler2D Depth;
uniform vec3 PARAMETERS; // samples, radius, strength
out vec4 oColor;

// The picture at `pixel` in `c`, and the gathered value there in `value`; false where the
// picture stays as it is: on the background and at zero strength.
bool PictureAndGathered(ivec2 pixel, out vec4 c, out vec4 value)
{
    c = texelFetch(Image, pixel, 0);
    value = vec4(0.0);
    float d = texelFetch(Depth, pixel, 0).r;
    if (d >= 1.0 || PARAMETERS.z == 0.0)
        return false;
    float z = ViewPosition(ProjectionMatrixInv, (vec2(pixel) + 0.5) / vec2(textureSize(Depth, 0)), d).z;
    value = Upsampled(Depth, ProjectionMatrixInv, pixel, z);
    return true;
}
