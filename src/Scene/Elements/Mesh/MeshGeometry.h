// Shape helpers shared by the mesh factories and the mesh kernels.
#pragma once

#include "Math/Vector3.h"

namespace vel {

// Newell's polygon normal: the sum of the edges' cross terms, as long as twice the area and
// independent of which corner starts. Zero for a degenerate polygon.
inline Vector3<double> NormalFromPolygon(Vector3<double> const* points, int count)
{
    Vector3<double> n;
    for (int i = 0; i < count; ++i) {
        Vector3<double> const& a = points[i];
        Vector3<double> const& b = points[(i + 1) % count];
        n.x += (a.y - b.y) * (a.z + b.z);
        n.y += (a.z - b.z) * (a.x + b.x);
        n.z += (a.x - b.x) * (a.y + b.y);
    }
    return n;
}

} // namespace vel
