// FilterAdd5: the sum of five textures.
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image0, Image1, Image2, Image3, Image4;
in vec2 vUV;
out vec4 oColor;
void main()
{
    oColor = texture(Image0, vUV) + texture(Image1, vUV) + texture(Image2, vUV) + texture(Image3, vUV) +
             texture(Image4, vUV);
}
