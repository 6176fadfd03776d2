// Depth peeling of one component: as "Mesh/MeshDepthPeel", for the faces of component
// "Component" only (the thickness of a part, for the brushes that measure it).
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
layout(location = 0) in vec3 Position;
layout(location = 1) in ivec3 ComponentPatchFace;
flat out int vComponent;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
    vComponent = ComponentPatchFace.x;
}
##FRAGMENT
uniform sampler2D DepthTexture;
uniform int Component;
flat in int vComponent;
out vec4 oDepth;
void main()
{
    if (vComponent != Component)
        discard;
    float peeled = texelFetch(DepthTexture, ivec2(gl_FragCoord.xy), 0).r;
    if (gl_FragCoord.z <= peeled)
        discard;
    oDepth = vec4(gl_FragCoord.z);
}
