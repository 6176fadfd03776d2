// SkyBox: the environment as the background, with the logic of CopySkyBox: "ProjectionModelViewMatrix"
// takes a point (x, y, -1, 1) of the screen to a view direction in the world (the inverse of the
// projection times the camera's rotation), "Rotation" turns the environment. It is drawn at the far
// plane, so that the scene's depth hides it; "level" picks a blurred level of the cube (0: sharp).
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform mat3 Rotation;
out vec3 vDirection;
void main() { vec2 xy = 2.0 * vec2(gl_VertexID >> 1, gl_VertexID & 1) - 1.0; vec4 p = ProjectionModelViewMatrix * vec4(xy, -1.0, 1.0); vDirection = Rotation * (p.xyz / p.w); gl_Position = vec4(xy, 1.0, 1.0); }
##FRAGMENT
uniform samplerCube box;
uniform float level;
in vec3 vDirection;
out vec4 oColor;
void main()
{
    oColor = vec4(textureLod(box, vDirection, level).rgb, 1.0);
}
