// The vertex stage of an element bent along a snake's axis (instanced). Instance i is the
// item, placed by "ItemMatrix" (the odd entry for odd instances), whose local z from -0.5
// to 0.5 becomes the range [i, i + 1] of bone units, scaled by "InstancesMul". The bones are
// the axis' vertex frames in "BonesMatrices", four texels (the columns of a mat4x3) each;
// a point blends the two frames around it by its fraction. "Closed" wraps the bones round.
// Defines as "Mesh/vMeshRender".
##VERTEX
#include ":/shaders/Include/MaterialUtils.glsl"
#include ":/shaders/Mesh/MeshRenderVertex.glsl"
#include ":/shaders/Include/SnakeBones.glsl"
uniform mat4 ProjectionModelViewMatrix;
uniform float Time; // for object shaders built on this stage; the built-in one does not move

void main()
{
    int index = gl_InstanceID & 1;
    vec3 p = ItemMatrix[index] * vec4(Position, 1.0);
#if !defined(DEPTH_ONLY) && !defined(RENDER_FAST)
    vec3 n = ItemNormalMatrix[index] * Normal.xyz;
#else
    vec3 n = vec3(0.0, 0.0, 1.0);
#endif
    p = SnakeBend(p, n, gl_InstanceID, Closed != 0);
    gl_Position = ProjectionModelViewMatrix * vec4(p, 1.0);
#ifndef DEPTH_ONLY
#ifndef RENDER_FAST
    // MeshVaryings applies its matrix to the attribute: the bent normal goes in its place.
    MeshVaryings(NormalMatrix);
    vNormal = NormalMatrix * n;
#else
    MeshVaryings(NormalMatrix);
#endif
#endif
}
