// FilterAdd: "Image" plus the vector "addend".
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image;
uniform vec4 addend;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = texture(Image, vUV) + addend; }
