// XYZSphere: the navigation sphere. Only the hemisphere facing the viewer is drawn (no depth
// buffer); the caps of the three axes are tinted red, green and blue, darker on the negative side.
##VERTEX
layout(location = 0) in vec3 Position;
uniform mat4 ProjectionModelViewMatrix;
out vec3 vPosition;
out vec3 vNormal;
void main()
{
    vPosition = normalize(Position);
    vNormal = normalize((ProjectionModelViewMatrix * vec4(Position, 0.0)).xyz);
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
}
##FRAGMENT
in vec3 vPosition;
in vec3 vNormal;
out vec4 oColor;
void main()
{
    if (vNormal.z < 0.0)
        discard;
    vec3 c = vec3(0.45);
    vec3 a = abs(vPosition);
    float cap = 0.93;
    if (a.x > cap) c = vPosition.x > 0.0 ? vec3(0.9, 0.2, 0.2) : vec3(0.45, 0.1, 0.1);
    if (a.y > cap) c = vPosition.y > 0.0 ? vec3(0.2, 0.8, 0.2) : vec3(0.1, 0.4, 0.1);
    if (a.z > cap) c = vPosition.z > 0.0 ? vec3(0.25, 0.4, 0.95) : vec3(0.12, 0.2, 0.48);
    oColor = vec4(c * (0.35 + 0.65 * vNormal.z), 1.0);
}
