// ScreenSpace: what the screen-space effects share: view positions from the depth texture
// through an inverse projection (NDC to view), and a hash of the pixel that moves with time.
#ifndef VEL_SCREEN_SPACE
#define VEL_SCREEN_SPACE

// The view position of texture coordinate `uv` at depth `d` (0..1).
vec3 ViewPosition(mat4 screenToView, vec2 uv, float d)
{
    vec4 q = screenToView * vec4(uv * 2.0 - 1.0, d * 2.0 - 1.0, 1.0);
    return q.xyz / q.w;
}

// A value in 0..1 from a pixel and a time; the third coordinate lets the noise move from frame
// to frame, so that accumulation averages it out.
float Hash12(vec2 pixel, float time)
{
    vec3 p = fract(vec3(pixel, time) * vec3(0.1031, 0.11369, 0.13787));
    p += dot(p, p.yzx + 19.19);
    return fract((p.x + p.y) * p.z);
}

#endif
