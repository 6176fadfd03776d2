// Segment: one line from "P0" to "P1" (model space) in "Color", drawn as GL_LINES with two
// vertices and no vertex buffer.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform vec3 P0;
uniform vec3 P1;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(gl_VertexID == 0 ? P0 : P1, 1.0);
}
##FRAGMENT
uniform vec4 Color;
out vec4 oColor;
void main()
{
    oColor = Color;
}
