// Depth only (shadow maps, the depth pre-pass): position alone, no draw buffer.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
layout(location = 0) in vec3 Position;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
}
##FRAGMENT
void main()
{
}
