// DepthMapOrthogonal: the depth buffer of an orthographic projection as grey: depth is linear
// in eye distance already, from "NearFar".x to .y; 0 at "Range".x, 1 at "Range".y, black where
// nothing was drawn.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform vec2 NearFar; // the planes of the projection that wrote the depth
float EyeDistance(float d)
{
    return mix(NearFar.x, NearFar.y, d);
}
#include ":/shaders/Include/DepthMap.glsl"
