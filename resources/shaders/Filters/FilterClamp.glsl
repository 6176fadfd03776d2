// FilterClamp: "Image" clamped to 0..1.
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main() { oColor = clamp(texture(Image, vUV), 0.0, 1.0); }
