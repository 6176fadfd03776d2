// FilterThresholdMul: the bloom source: what FilterThreshold keeps, times "factor".
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image;
uniform float threshold;
uniform float factor;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 c = texture(Image, vUV);
    oColor = max(c.r, max(c.g, c.b)) > threshold ? c * factor : vec4(0.0);
}
