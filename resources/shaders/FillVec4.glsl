// FillVec4: the uniform "Color" over the whole target, for float and integer-free targets alike.
##VERTEX
void main()
{
    vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);
    gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0);
}
##FRAGMENT
uniform vec4 Color;
out vec4 oColor;
void main()
{
    oColor = Color;
}
