// Normalize: xyz of "Image" to unit length (a zero vector stays zero); w is kept.
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 v = texture(Image, vUV);
    float len = length(v.xyz);
    oColor = vec4(len > 0.0 ? v.xyz / len : v.xyz, v.w);
}
