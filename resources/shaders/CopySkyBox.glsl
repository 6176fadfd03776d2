// CopySkyBox: the cube "box" seen through the full-screen quad: "ProjectionModelViewMatrix" takes a
// point (x, y, -1, 1) of the quad to a direction, "Rotation" turns it further (to a cube face when
// the environment fills its levels). Each target texel takes the box's value in its direction.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform mat3 Rotation;
out vec3 vDirection;
void main() { vec2 xy = 2.0 * vec2(gl_VertexID >> 1, gl_VertexID & 1) - 1.0; vec4 p = ProjectionModelViewMatrix * vec4(xy, -1.0, 1.0); vDirection = Rotation * (p.xyz / p.w); gl_Position = vec4(xy, 0.0, 1.0); }
##FRAGMENT
uniform samplerCube box;
in vec3 vDirection;
out vec4 oColor;
void main()
{
    oColor = vec4(texture(box, vDirection).rgb, 1.0);
}
