// Rotate about the centre: "rotation" is the rotation minus the identity.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform mat3 rotation;
layout(location = 0) out vec3 deformation;
void main()
{
    int info;
    vec3 position;
    if (!ClayVertex(info, position))
        discard;
    deformation = rotation * (position - center);
}
