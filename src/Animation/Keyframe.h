// Keyframe: one camera key of the animation list: where the view stands, how long until the
// next key, and how it gets there.
#pragma once

#include "Math/Matrix3.h"
#include "Math/Vector3.h"
#include "Math/Vector4.h"

#include <vector>

namespace vel {

struct Keyframe {
    static constexpr int CUT = 0;
    static constexpr int LINEAR = 1;
    static constexpr int SMOOTH = 2;

    double time = 1;           // seconds from this key to the next
    int transition = SMOOTH;   // CUT, LINEAR or SMOOTH
    Matrix3<double> rotation;  // the view's rotation
    Vector3<double> position;  // the view's pivot
    double distance = 0;       // the view's distance from the pivot
    std::vector<Vector4<float>> viewParameters; // records taken from Rendering; playback ignores them

    bool operator==(Keyframe const& o) const
    {
        return time == o.time && transition == o.transition && rotation == o.rotation && position == o.position &&
               distance == o.distance && viewParameters == o.viewParameters;
    }
};

} // namespace vel
