// Symmetry: the copies of a brush under mirror and rotation symmetry, in world space. The
// viewport wraps each copy back into an ABrush; here it is plain data, so the rule can be
// checked without a scene.
#pragma once

#include <vector>

#include "Math/Matrix34.h"
#include "Math/Vector3.h"

namespace vel {

struct SymmetryCopy {
    Vector3<double> position;
    Vector3<double> normal;
    Matrix34<double> frame; // the brush frame: rows x, y, z, and the point as translation
    signed char mirror = 1; // -1 when an odd number of mirrors made this copy
};

// Starts from `brush`; each enabled mirror doubles the list with the reflection through that
// plane of `symmetryFrame` (mirror negated, normal reflected, frame rebuilt right-handed with
// Frame_yZ); each enabled rotation multiplies the list by `count`, turning by 2 pi / count
// about that axis of the frame. Mirrors come first (x, y, z), then rotations (x, y, z); a
// count below 2 adds no turned copies.
std::vector<SymmetryCopy> symmetry(SymmetryCopy const& brush, Matrix34<double> const& symmetryFrame, bool mirrorX,
                                   bool mirrorY, bool mirrorZ, bool rotX, bool rotY, bool rotZ, int count);

} // namespace vel
