// ShadowComposit: darkens what the light does not see. Each pixel goes back to the world by
// its depth ("iScreenToWorld", from window coordinates and depth in 0..1), and is compared
// with the depth cube "iShadow" rendered around the light: the cube's face along the largest
// axis of the light-to-point vector holds the depth of the nearest occluder in that face's
// perspective, whose near and far planes are "iDepthCompute". The picture is multiplied by
// mix(1, shade, strength), the strength being the alpha of "iLightPositionAlpha".
// Surfaces facing away from the light are in their own shadow.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform vec2 iResolution;
uniform sampler2D iColor;
uniform sampler2D iDepth;
uniform sampler2D iNormal;
uniform samplerCubeShadow iShadow;
uniform vec2 iDepthCompute;       // near and far of the cube's faces
uniform vec4 iLightPositionAlpha; // world position of the light, strength
uniform mat4 iScreenToWorld;
uniform mat3 iScreenToWorldRotation; // view normals to world normals
out vec4 oColor;
// The depth a face of the cube stores for a point at distance `z` along its axis.
float faceDepth(float z)
{
    float n = iDepthCompute.x;
    float f = iDepthCompute.y;
    float ndc = (f + n) / (f - n) - 2.0 * f * n / ((f - n) * z);
    return ndc * 0.5 + 0.5;
}
void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    oColor = texelFetch(iColor, p, 0);
    float depth = texelFetch(iDepth, p, 0).r;
    if (depth >= 1.0)
        return;
    vec4 world = iScreenToWorld * vec4(gl_FragCoord.xy / iResolution, depth, 1.0);
    world /= world.w;
    vec3 toPoint = world.xyz - iLightPositionAlpha.xyz;
    vec3 normal = normalize(iScreenToWorldRotation * texelFetch(iNormal, p, 0).xyz);
    float shade;
    if (dot(normal, -toPoint) <= 0.0) {
        shade = 0.0;
    } else {
        vec3 a = abs(toPoint);
        float z = max(a.x, max(a.y, a.z));
        // A small bias in depth keeps a surface from shadowing itself.
        float reference = faceDepth(z * 0.995);
        shade = texture(iShadow, vec4(toPoint, reference));
    }
    oColor.rgb *= mix(1.0, shade, iLightPositionAlpha.a);
}
