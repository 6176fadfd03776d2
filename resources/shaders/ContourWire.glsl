// ContourWire: outlines of the objects marked for contours; see Include/Contour.
##VERTEX
#include ":/shaders/Include/EdgeTile.glsl"
#include ":/shaders/Include/EdgeTileQuads.glsl"
##FRAGMENT
#include ":/shaders/Include/RenderFlags.glsl"
#define WIRE
#include ":/shaders/Include/Contour.glsl"
