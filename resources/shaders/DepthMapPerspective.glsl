// DepthMapPerspective: the depth buffer of a perspective projection as grey, linear in eye
// distance: 0 at "Range".x, 1 at "Range".y, black where nothing was drawn. "NearFar" are the
// planes of the projection that wrote the depth.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform vec2 NearFar; // the planes of the projection that wrote the depth
float EyeDistance(float d)
{
    float n = NearFar.x;
    float f = NearFar.y;
    return 2.0 * n * f / (f + n - (2.0 * d - 1.0) * (f - n));
}
#include ":/shaders/Include/DepthMap.glsl"
