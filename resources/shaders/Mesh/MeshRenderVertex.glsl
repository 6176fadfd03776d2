// The inputs and outputs shared by the vertex stages of "Mesh/vMeshRender" and
// "Mesh/vMeshSnakeRender", and MeshVaryings, which fills the outputs. Needs MaterialUtils
// included before it. Defines as those files tell.
layout(location = 0) in vec3 Position;
#ifndef DEPTH_ONLY
uniform mat3 NormalMatrix;
uniform vec4 ObjectColorAlpha;
uniform vec4 ObjectLightThick;
uniform vec2 ObjectRoughMetal;
layout(location = 1) in ivec3 ComponentPatchFace;
#ifdef MESH_PBR
layout(location = 2) in uvec4 Material;
#ifndef RENDER_FAST
layout(location = 3) in vec4 Normal;
#endif
#else
#ifndef RENDER_FAST
layout(location = 2) in vec4 Normal;
#endif
#endif
#ifdef MESH_TEX
uniform usampler2D MaterialTexture;
#endif
flat out ivec3 vComponentPatchFace;
smooth out vec3 vNormal;
smooth out vec4 vColorAlpha;
smooth out vec4 vLightThick;
smooth out vec2 vRoughMetal;

// The outputs, with `normalMatrix` taking the element's normal to the view.
void MeshVaryings(mat3 normalMatrix)
{
    vComponentPatchFace = ComponentPatchFace;
#ifdef RENDER_FAST
    vNormal = vec3(0.0, 0.0, 1.0);
#else
    vNormal = normalMatrix * Normal.xyz;
#endif
#if defined(MESH_PBR) || defined(MESH_TEX)
#ifdef MESH_PBR
    uvec4 m = Material;
#else
    int width = textureSize(MaterialTexture, 0).x;
    uvec4 m = texelFetch(MaterialTexture, ivec2(gl_VertexID % width, gl_VertexID / width), 0);
#endif
    DecodeMaterialNormalizedUnsigned(m, vColorAlpha, vLightThick, vRoughMetal);
    // The object's rough and metal are signed: 0 leaves the vertex's own value.
    vColorAlpha *= ObjectColorAlpha;
    vLightThick += ObjectLightThick;
    vRoughMetal += ObjectRoughMetal;
#else
    vColorAlpha = ObjectColorAlpha;
    vLightThick = ObjectLightThick;
    vRoughMetal = ObjectRoughMetal * 0.5 + 0.5;
#endif
}
#endif
