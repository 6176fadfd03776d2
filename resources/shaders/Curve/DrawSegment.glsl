// DrawSegment: a family of parallel segments, instance i running from P0 + i Step to
// P1 + i Step (model space), drawn as instanced GL_LINES without a vertex buffer: a grid
// direction is one draw. The colour fades to transparent with the instance's distance from
// the middle instance "Middle", over "Fade" instances (0: no fade); the middle line is
// "ColorAxis".
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform vec3 P0;
uniform vec3 P1;
uniform vec3 Step;
uniform int Middle;
uniform float Fade;
uniform vec4 Color;
uniform vec4 ColorAxis;
out vec4 vColor;
void main()
{
    vec3 offset = float(gl_InstanceID) * Step;
    gl_Position = ProjectionModelViewMatrix * vec4((gl_VertexID == 0 ? P0 : P1) + offset, 1.0);
    float away = abs(float(gl_InstanceID - Middle));
    vColor = gl_InstanceID == Middle ? ColorAxis : Color;
    if (Fade > 0.0)
        vColor.a *= clamp(1.0 - away / Fade, 0.0, 1.0);
}
##FRAGMENT
in vec4 vColor;
out vec4 oColor;
void main()
{
    oColor = vColor;
}
