// DrawCircle: a circle of "Segments" segments, centre "Center", radius "Radius", in the plane
// of the unit vectors "AxisX" and "AxisY" (model space), drawn as GL_LINE_LOOP without a vertex buffer.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform vec3 Center;
uniform vec3 AxisX;
uniform vec3 AxisY;
uniform float Radius;
uniform int Segments;
void main()
{
    float angle = 6.28318530718 * float(gl_VertexID) / float(Segments);
    vec3 p = Center + Radius * (cos(angle) * AxisX + sin(angle) * AxisY);
    gl_Position = ProjectionModelViewMatrix * vec4(p, 1.0);
}
##FRAGMENT
uniform vec4 Color;
out vec4 oColor;
void main()
{
    oColor = Color;
}
