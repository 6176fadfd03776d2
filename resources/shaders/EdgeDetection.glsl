// EdgeDetection: edges where object ids or normals change; see Include/Edges.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
#include ":/shaders/Include/Edges.glsl"
