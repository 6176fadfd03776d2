// Sculptor: one symmetric copy of the brush during a stroke. A stroke under mirror and
// rotation symmetry drives several at once; each keeps every sample of its copy, but a step
// reads only the first and the last two.
#pragma once

#include <vector>

#include "Deformers/Gesture.h"
#include "Deformers/SBrush.h"
#include "Math/Vector3.h"

namespace vel {

class Sculptor : public Gesture {
public:
    // The kinds of part a sculptor may pick out of an element.
    enum TComponent { NOCOMPONENT = 0, PATCH = 1, COMPONENT = 3 };

    Sculptor(int action, int select, int property, signed char mirror, bool flag, Vector3<float> const& axis);

    void add(SBrush const& sample) { samples.push_back(sample); }
    int count() const { return int(samples.size()); }
    // Sample i clamped into the stroke, so that a step's C, P and F always exist.
    SBrush const& sample(int i) const;

    int action = 0;
    int select = 0;
    int property = 0;
    std::vector<SBrush> samples;
    Vector3<float> axis;     // mirror-adjusted reference axis, own coordinates
    signed char mirror = 1;  // -1 when an odd number of mirrors made this copy
    bool flag = false;       // copied from the viewport's stroke state

    // The sculpt action of the brush key; 81 when not sculpting.
    static int gSculptAction;
};

} // namespace vel
