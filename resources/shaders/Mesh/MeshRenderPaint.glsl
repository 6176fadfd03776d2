// Painting into textures (kinds 3 and 4): the mesh drawn with its packed material, corner
// materials ("MeshPbr" 1) or the object's, as unsigned words into one integer draw buffer,
// so that a paint pass can blend it into the material of what it covers.
##VERTEX
#include ":/shaders/Include/MaterialUtils.glsl"
uniform mat4 ProjectionModelViewMatrix;
uniform vec4 ObjectColorAlpha;
uniform vec4 ObjectLightThick;
uniform vec2 ObjectRoughMetal;
uniform int MeshPbr;
layout(location = 0) in vec3 Position;
layout(location = 1) in uvec4 Material;
flat out uvec4 vMaterial;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
    vec4 colorAlpha = vec4(1.0);
    vec4 lightThick = vec4(0.0);
    vec2 roughMetal = vec2(0.0);
    if (MeshPbr != 0)
        DecodeMaterialNormalizedSigned(Material, colorAlpha, lightThick, roughMetal);
    vMaterial = EncodeMaterialNormalizedSigned(colorAlpha * ObjectColorAlpha, lightThick + ObjectLightThick,
                                               roughMetal + ObjectRoughMetal);
}
##FRAGMENT
flat in uvec4 vMaterial;
out uvec4 oMaterial;
void main()
{
    oMaterial = vMaterial;
}
