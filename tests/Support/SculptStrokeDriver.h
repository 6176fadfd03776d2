// Drives an element's sculpt entry the way the viewport does: begin with the first sample,
// one progress call per later sample, and the end with the last; optionally a mirrored copy
// through the plane x = 0 alongside.
#pragma once

#include "Deformers/Sculptor.h"

#include <deque>
#include <memory>
#include <vector>

namespace vel::test {

inline SBrush SculptSample(Vector3<float> position, Vector3<float> normal, float radius)
{
    SBrush b;
    b.position = position;
    b.normal = normal;
    b.radius = radius;
    return b;
}

template <class E>
void DriveStroke(E& element, int action, std::vector<SBrush> const& samples, bool mirrorX = false)
{
    Sculptor::gSculptAction = action;
    std::vector<std::unique_ptr<Sculptor>> owned;
    std::deque<Sculptor*> sculptors;
    owned.push_back(std::make_unique<Sculptor>(action, 0, 0, 1, false, Vector3<float>(0, 0, 1)));
    if (mirrorX)
        owned.push_back(std::make_unique<Sculptor>(action, 0, 0, -1, false, Vector3<float>(0, 0, -1)));
    for (auto& s : owned)
        sculptors.push_back(s.get());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t k = 0; k < owned.size(); ++k) {
            Sculptor& s = *owned[k];
            if (i == 0)
                s._begin();
            else if (i + 1 == samples.size())
                s._end();
            else
                s._progress();
            SBrush b = samples[i];
            if (k == 1) {
                b.position.x = -b.position.x;
                b.normal.x = -b.normal.x;
            }
            s.add(b);
        }
        element.sculpt(sculptors);
    }
    Sculptor::gSculptAction = 81;
}

} // namespace vel::test
