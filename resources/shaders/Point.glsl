// Point: a square of "Size" pixels around "Position" (model space) in "Color", drawn as a
// triangle strip of four vertices; the depth is the point's own, so that surfaces hide it.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform vec3 Position;
uniform float Size;
uniform vec2 iResolution;
void main()
{
    vec2 corner = vec2(gl_VertexID >> 1, gl_VertexID & 1) * 2.0 - 1.0;
    vec4 p = ProjectionModelViewMatrix * vec4(Position, 1.0);
    p.xy += corner * Size / iResolution * p.w;
    gl_Position = p;
}
##FRAGMENT
uniform vec4 Color;
out vec4 oColor;
void main()
{
    oColor = Color;
}
