// Copy: level 0 of the texture "Image" onto the whole target. GREY_MAX: grey from the largest channel.
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 c = textureLod(Image, vUV, 0.0);
#ifdef GREY_MAX
    float grey = max(c.r, max(c.g, c.b));
    c = vec4(grey, grey, grey, c.a);
#endif
    oColor = c;
}
