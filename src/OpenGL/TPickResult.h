// TPickResult: what lies under one pixel of the G-buffer, as GLLayer::pick and GLPick read it.
#pragma once

#include "Math/Matrix34.h"
#include "Math/Vector3.h"

namespace vel {

struct TPickResult {
    bool hit = false;
    int objectId = 0;  // the list entry + 1, with bit 31 for a selected or highlighted tool
    int item = 0;
    int element = 0;
    int spare = 0;     // the tool's own id
    int component = 0;
    int patch = 0;
    int face = 0;
    float depth = 1.0f; // depth buffer value; 1 where nothing is
    Vector3<double> position; // world, filled by the view
    Vector3<double> normal;   // world, unit; zero without a hit
    Matrix34<double> toolMatrix; // world matrix of the hit tool
    Vector3<float> viewNormal;   // as the normal target holds it

    // The list entry of the id word, without the selection bit; -1 without a hit.
    int entry() const { return hit ? (objectId & 0x7fffffff) - 1 : -1; }
};

} // namespace vel
