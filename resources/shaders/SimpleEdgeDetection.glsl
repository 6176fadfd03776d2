// SimpleEdgeDetection: edges where object ids change, for normals that come from depth (the
// fast setting) and would mark every facet; see Include/Edges.
##VERTEX
#include ":/shaders/Include/EdgeTile.glsl"
#include ":/shaders/Include/EdgeTileQuads.glsl"
##FRAGMENT
#define IDS_ONLY
#include ":/shaders/Include/Edges.glsl"
