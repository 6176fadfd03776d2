// Depth peeling: keeps what lies behind the layer in "DepthTexture" (the depth of the last
// peel, window sized) and writes its own depth into the one draw buffer.
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
layout(location = 0) in vec3 Position;
void main()
{
    gl_Position = ProjectionModelViewMatrix * vec4(Position, 1.0);
}
##FRAGMENT
uniform sampler2D DepthTexture;
out vec4 oDepth;
void main()
{
    float peeled = texelFetch(DepthTexture, ivec2(gl_FragCoord.xy), 0).r;
    if (gl_FragCoord.z <= peeled)
        discard;
    oDepth = vec4(gl_FragCoord.z);
}
