// Noise: film grain: "Image" plus a grey noise of amplitude "strength" that changes with "frame".
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
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
