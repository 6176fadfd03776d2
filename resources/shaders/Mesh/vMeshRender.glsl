// The vertex stage of meshes in the G-buffer passes.
//   (none)       object material only
//   MESH_PBR     the Material attribute (location 2) adds to the object material
//   MESH_TEX     the material of vertex i is texel i of "MaterialTexture", row by row
//   RENDER_FAST  no Normal attribute: the frame derives normals from depth
//   DEPTH_ONLY   position alone, for depth passes
// Locations: Position 0, ComponentPatchFace 1, then Material and Normal as MeshVBO binds them.
##VERTEX
#include ":/shaders/Include/MaterialUtils.glsl"
#include ":/shaders/Mesh/MeshRenderVertex.glsl"
uniform mat4 ProjectionModelViewMatrix;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
#ifndef DEPTH_ONLY
    MeshVaryings(NormalMatrix);
#endif
}
