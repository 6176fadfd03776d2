// EdgeTile: the side in pixels of the tiles of "EdgeTiles" and "EdgeTileMask", which the edge
// and contour passes read; EdgeTiles::TILE on the C++ side.
#define TILE 8
