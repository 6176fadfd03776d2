// FilterAddMipMaps: the sum of the mip levels 0 to "level" of "Image".
##VERTEX
out vec2 vUV;
void main() { vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1); vUV = xy; gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0); }
##FRAGMENT
uniform sampler2D Image;
uniform int level;
in vec2 vUV;
out vec4 oColor;
void main()
{
    vec4 sum = vec4(0.0);
    for (int l = 0; l <= level; ++l)
        sum += textureLod(Image, vUV, float(l));
    oColor = sum;
}
