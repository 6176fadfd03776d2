// The vertex stage of clay in the G-buffer and depth passes: each corner of the triangle
// stream is (packed vertex, packed half-edge arriving there); position, corner normal, face
// ids and material are read from the tables. Defines as "Mesh/vMeshRender" (MESH_TEX reads
// the corner material as MESH_PBR does: clay materials always live in a texture).
##VERTEX
#define CLAY_TABLES_ONLY
#include ":/shaders/Clay/ClayCommon.glsl"
#include ":/shaders/Include/MaterialUtils.glsl"
layout(location = 0) in ivec2 ve;
uniform sampler2D Positions;
uniform mat4 ProjectionModelViewMatrix;
#ifndef DEPTH_ONLY
uniform isampler2D EdgesHalfFaceStart;
uniform isampler2D FacesEdgeComponentPatch;
uniform sampler2D EdgesNormal;
uniform usampler2D EdgesMaterial;
uniform mat3 NormalMatrix;
uniform vec4 ObjectColorAlpha;
uniform vec4 ObjectLightThick;
uniform vec2 ObjectRoughMetal;
flat out ivec3 vComponentPatchFace;
smooth out vec3 vNormal;
smooth out vec4 vColorAlpha;
smooth out vec4 vLightThick;
smooth out vec2 vRoughMetal;
#endif
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(texelFetch(Positions, ENCODE(ve.x), 0).xyz, 1.0);
#ifndef DEPTH_ONLY
    ivec2 corner = ENCODE(ve.y);
    ivec2 face = ENCODE(texelFetch(EdgesHalfFaceStart, corner, 0).y);
    ivec3 ecp = texelFetch(FacesEdgeComponentPatch, face, 0).xyz;
    vComponentPatchFace = ivec3(ecp.y, ecp.z, face.y * textureSize(FacesEdgeComponentPatch, 0).x + face.x);
#ifdef RENDER_FAST
    vNormal = vec3(0.0, 0.0, 1.0);
#else
    vNormal = NormalMatrix * texelFetch(EdgesNormal, corner, 0).xyz;
#endif
#if defined(MESH_PBR) || defined(MESH_TEX)
    DecodeMaterialNormalizedUnsigned(texelFetch(EdgesMaterial, corner, 0), vColorAlpha, vLightThick, vRoughMetal);
    vColorAlpha *= ObjectColorAlpha;
    vLightThick += ObjectLightThick;
    vRoughMetal += ObjectRoughMetal;
#else
    vColorAlpha = ObjectColorAlpha;
    vLightThick = ObjectLightThick;
    vRoughMetal = ObjectRoughMetal * 0.5 + 0.5;
#endif
#endif
}
