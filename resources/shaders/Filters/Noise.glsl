// Noise: film grain: "Image" plus a grey noise of amplitude "strength" that changes with "frame".
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/ScreenSpace.glsl"
uniform sampler2D Image;
uniform int frame;
uniform float strength;
in vec2 vUV;
out vec4 oColor;
void main()
{
    float n = Hash12(gl_FragCoord.xy, float(frame)) - 0.5;
    oColor = texture(Image, vUV) + vec4(vec3(n * strength), 0.0);
}
