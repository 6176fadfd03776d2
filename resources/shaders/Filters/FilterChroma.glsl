// FilterChroma: chromatic aberration of a lens. The vertex stage gives each pixel two positions:
// xy0, where it is, and xy1, moved away from "center" by "amount" of its distance from it; each
// channel of the result mixes the picture at the two by its component of "chroma", so that each
// colour has its own lens shift.
##VERTEX
uniform vec2 center;
uniform float amount;
out vec2 xy0;
out vec2 xy1;
void main()
{
    vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);
    xy0 = xy;
    xy1 = center + (xy - center) * (1.0 + amount);
    gl_Position = vec4(2.0 * xy - 1.0, 0.0, 1.0);
}
##FRAGMENT
uniform sampler2D Image;
uniform vec4 chroma;
in vec2 xy0;
in vec2 xy1;
out vec4 oColor;
void main()
{
    oColor = mix(texture(Image, xy0), texture(Image, xy1), chroma);
}
