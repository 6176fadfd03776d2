// FullScreen: the vertex stage of every full-screen pass: a quad from gl_VertexID alone
// (xy = (id >> 1, id & 1)), drawn by GLFill as a strip of four vertices; vUV runs 0..1.
out vec2 vUV;
void main()
{
    vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);
    vUV = xy;
    gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0);
}
