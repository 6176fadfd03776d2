// FilterSkyBox: one level of the environment: for the direction of each texel (as in CopySkyBox),
// the mean of seven taps of "box": "samples" hold the taps around the view direction (0, 0, -1),
// the first being that direction itself, the others a ring one texel of the level away; they are
// turned onto the texel's direction by the rotation that takes samples[0] there.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform mat3 Rotation;
out vec3 vDirection;
void main() { vec2 xy = 2.0 * vec2(gl_VertexID >> 1, gl_VertexID & 1) - 1.0; vec4 p = ProjectionModelViewMatrix * vec4(xy, -1.0, 1.0); vDirection = Rotation * (p.xyz / p.w); gl_Position = vec4(xy, 0.0, 1.0); }
##FRAGMENT
#include ":/shaders/Include/Math.glsl"
uniform samplerCube box;
uniform vec3 samples[7];
in vec3 vDirection;
out vec4 oColor;
void main()
{
    mat3 r = rot(samples[0], normalize(vDirection));
    vec3 sum = vec3(0.0);
    for (int i = 0; i < 7; ++i)
        sum += texture(box, r * samples[i]).rgb;
    oColor = vec4(sum / 7.0, 1.0);
}
