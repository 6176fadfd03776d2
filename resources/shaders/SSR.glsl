// SSR: reflections in screen space. For each drawn pixel "iRays" rays leave along the reflection
// of the view direction about the normal, jittered by the roughness and by a hash of the pixel
// and the frame "iFrame".x; SSR_ray marches each in screen space, one step a pixel along the
// larger axis of its extent, at most COUNT_MAX steps, and takes the picture "iImage" where the
// ray first passes behind the depth by less than THRESHOLD steps' depth. The output is the sum of
// the hits over the ray count, times 1 - roughness: what GLAdd then adds to the picture.
// Roughness is "iRoughness", or, when "iFrame".y is 1, the texture "iRoughMetal" (style 7).
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/ScreenSpace.glsl"
uniform sampler2D iImage;
uniform sampler2D iDepth;
uniform sampler2D iNormal;
uniform sampler2D iRoughMetal;
uniform ivec2 iFrame; // frame number; 1 to read iRoughMetal
uniform vec2 iResolution; // of the depth, in pixels
uniform mat4 iScreenToView;
uniform mat4 iViewToScreen;
uniform float iRoughness;
uniform int iRays;
in vec2 vUV;
out vec4 oColor;

const float THRESHOLD = 1.0;
const int COUNT_MAX = 32;

// The point where the ray from `origin` along `direction` (view space) first passes behind
// the depth, in pixels of the depth texture; false when it leaves the picture first.
bool SSR_ray(vec3 origin, vec3 direction, out vec2 hit)
{
    // Far enough to cross much of the picture, but in front of the camera.
    float len = abs(origin.z);
    if (direction.z > 0.0)
        len = min(len, 0.9 * -origin.z / direction.z);
    vec4 a = iViewToScreen * vec4(origin, 1.0);
    vec4 b = iViewToScreen * vec4(origin + direction * len, 1.0);
    vec2 sa = (a.xy / a.w * 0.5 + 0.5) * iResolution;
    vec2 sb = (b.xy / b.w * 0.5 + 0.5) * iResolution;
    vec2 delta = sb - sa;
    int count = int(min(max(abs(delta.x), abs(delta.y)), float(COUNT_MAX)));
    // Depth along the screen line is linear in 1 / w, not in z.
    float za = origin.z / a.w, zb = (origin.z + direction.z * len) / b.w;
    float wa = 1.0 / a.w, wb = 1.0 / b.w;
    float last = origin.z;
    for (int i = 1; i <= count; ++i) {
        float t = float(i) / float(count);
        vec2 p = sa + delta * t;
        if (any(lessThan(p, vec2(0.0))) || any(greaterThanEqual(p, iResolution)))
            return false;
        float rayZ = mix(za, zb, t) / mix(wa, wb, t);
        float step = abs(rayZ - last) + 1e-3 * abs(rayZ);
        last = rayZ;
        float d = texelFetch(iDepth, ivec2(p), 0).r;
        if (d >= 1.0)
            continue;
        float sceneZ = ViewPosition(iScreenToView, p / iResolution, d).z;
        if (rayZ < sceneZ && sceneZ - rayZ < THRESHOLD * step) {
            hit = p;
            return true;
        }
    }
    return false;
}

void main()
{
    oColor = vec4(0.0);
    vec2 uv = vUV;
    float d = textureLod(iDepth, uv, 0.0).r;
    if (d >= 1.0)
        return;
    float roughness = iFrame.y == 1 ? texture(iRoughMetal, uv).r : iRoughness;
    roughness = clamp(roughness, 0.0, 1.0);
    if (roughness >= 1.0)
        return;
    vec3 p = ViewPosition(iScreenToView, uv, d);
    vec3 n = texture(iNormal, uv).xyz;
    if (dot(n, n) == 0.0)
        return;
    vec3 r = reflect(normalize(p), normalize(n));
    int rays = max(iRays, 1);
    vec3 sum = vec3(0.0);
    for (int k = 0; k < rays; ++k) {
        float time = float(iFrame.x * rays + k);
        vec3 jitter = vec3(Hash12(gl_FragCoord.xy, time), Hash12(gl_FragCoord.yx, time + 0.5),
                           Hash12(gl_FragCoord.xy + 7.0, time + 0.25)) - 0.5;
        vec3 direction = r + roughness * jitter;
        if (dot(direction, direction) == 0.0)
            continue;
        direction = normalize(direction);
        vec2 hit;
        if (SSR_ray(p, direction, hit))
            sum += textureLod(iImage, hit / iResolution, 0.0).rgb; // in a branch: no derivatives
    }
    oColor = vec4(sum / float(rays) * (1.0 - roughness), 0.0);
}
