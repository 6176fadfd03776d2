// The vertex stage of curve elements in the G-buffer passes: lines and their handle points,
// position only. The object material colours them; the normal faces the viewer.
//   RENDER_PBR   (fragment) the material targets too
##VERTEX
layout(location = 0) in vec3 Position;
uniform mat4 ProjectionModelViewMatrix;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
}
