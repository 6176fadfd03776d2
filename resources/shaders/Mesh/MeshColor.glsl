// Vertex colour: the corner materials' colour and alpha times the object's, or the object's
// alone when the mesh has none ("MeshPbr" 0). One draw buffer.
##VERTEX
#include ":/shaders/Include/MaterialUtils.glsl"
uniform mat4 ProjectionModelViewMatrix;
uniform vec4 ObjectColorAlpha;
uniform int MeshPbr;
layout(location = 0) in vec3 Position;
layout(location = 1) in uvec4 Material;
smooth out vec4 vColorAlpha;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
    vec4 lightThick;
    vec2 roughMetal;
    DecodeMaterialNormalizedUnsigned(Material, vColorAlpha, lightThick, roughMetal);
    if (MeshPbr == 0)
        vColorAlpha = vec4(1.0);
    vColorAlpha *= ObjectColorAlpha;
}
##FRAGMENT
smooth in vec4 vColorAlpha;
out vec4 oColor;
void main()
{
    oColor = vColorAlpha;
}
