// EdgeDetection: edges where object ids or normals change; see Include/Edges.
##VERTEX
#include ":/shaders/Include/EdgeTile.glsl"
#include ":/shaders/Include/EdgeTileQuads.glsl"
##FRAGMENT
#include ":/shaders/Include/Edges.glsl"
