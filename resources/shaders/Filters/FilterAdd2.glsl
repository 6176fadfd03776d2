// FilterAdd2: the sum of two textures, each sampled over the whole target whatever its size.
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image0, Image1;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = texture(Image0, vUV) + texture(Image1, vUV); }
