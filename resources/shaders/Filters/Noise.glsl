// Noise: film grain: "Image" plus a grey noise of amplitude "strength" that changes with "frame".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform sampler2D Image;
uniform int frame;
uniform float strength;
in vec2 vUV;
out vec4 oColor;
float Hash(vec3 p)
{
    p = fract(p * vec3(0.1031, 0.11369, 0.13787));
    p += dot(p, p.yzx + 19.19);
    return fract((p.x + p.y) * p.z);
}
void main()
{
    float n = Hash(vec3(gl_FragCoord.xy, float(frame))) - 0.5;
    oColor = texture(Image, vUV) + vec4(vec3(n * strength), 0.0);
}
