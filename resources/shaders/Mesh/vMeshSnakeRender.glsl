// The vertex stage of an element drawn as the links of a chain (instanced): each instance is
// the element bent between the two ends in "ItemMatrix", blended along its z from -0.5 to
// 0.5. With bones ("BonesMax" > 0) the ends of instance i are the frames i * "InstancesMul"
// and the next of "BonesMatrices", four texels (the rows of a mat4x3) a frame; "Closed"
// wraps the last link onto the first. Defines as "Mesh/vMeshRender".
##VERTEX
#include ":/shaders/Include/MaterialUtils.glsl"
#include ":/shaders/Mesh/MeshRenderVertex.glsl"
uniform mat4 ProjectionModelViewMatrix;
uniform mat4x3 ItemMatrix[2];
uniform mat3 ItemNormalMatrix[2];
uniform sampler2D BonesMatrices;
uniform int BonesMax;
uniform int Closed;
uniform int InstancesMul;
uniform float Time;
mat4x3 Bone(int frame)
{
    if (Closed != 0)
        frame = frame % BonesMax;
    frame = clamp(frame, 0, BonesMax - 1);
    vec4 r0 = texelFetch(BonesMatrices, ivec2(0, frame), 0);
    vec4 r1 = texelFetch(BonesMatrices, ivec2(1, frame), 0);
    vec4 r2 = texelFetch(BonesMatrices, ivec2(2, frame), 0);
    vec4 r3 = texelFetch(BonesMatrices, ivec2(3, frame), 0);
    return mat4x3(r0.xyz, r1.xyz, r2.xyz, r3.xyz);
}

void main()
{
    mat4x3 a = ItemMatrix[0];
    mat4x3 b = ItemMatrix[1];
    if (BonesMax > 0) {
        int frame = gl_InstanceID * max(InstancesMul, 1);
        a = Bone(frame);
        b = Bone(frame + 1);
    }
    float w = clamp(Position.z + 0.5, 0.0, 1.0);
    vec3 p = mix(a * vec4(Position, 1.0), b * vec4(Position, 1.0), w);
    gl_Position = ProjectionModelViewMatrix * vec4(p, 1.0);
#ifndef DEPTH_ONLY
    mat3 bend = BonesMax > 0 ? mat3(a) * (1.0 - w) + mat3(b) * w : ItemNormalMatrix[0] * (1.0 - w) + ItemNormalMatrix[1] * w;
    MeshVaryings(NormalMatrix * bend);
#endif
}
