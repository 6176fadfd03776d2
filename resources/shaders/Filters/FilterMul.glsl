// FilterMul: "Image" times the vector "factor"; MUL2: the product of "Image0" and "Image1".
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
#ifdef MUL2
uniform sampler2D Image0;
uniform sampler2D Image1;
#else
uniform sampler2D Image;
uniform vec4 factor;
#endif
in vec2 vUV;
out vec4 oColor;
void main()
{
#ifdef MUL2
    oColor = texture(Image0, vUV) * texture(Image1, vUV);
#else
    oColor = texture(Image, vUV) * factor;
#endif
}
