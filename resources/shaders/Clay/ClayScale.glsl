// Scale about the centre: "delta" is the factor minus one, per axis.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Clay/ClayCommon.glsl"

uniform vec3 center;
uniform vec3 delta;
layout(location = 0) out vec3 deformation;
void main()
{
    int info;
    vec3 position;
    if (!ClayVertex(info, position))
        discard;
    deformation = (position - center) * delta;
}
