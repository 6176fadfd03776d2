// SBrush: one sample of a sculpt stroke, in the sculpted element's own coordinates, so that
// steps never need the tool's transform.
#pragma once

#include <cstdint>

#include "Math/Pbr.h"
#include "Math/Vector3.h"

namespace vel {

struct SBrush {
    int kind = 0;
    int x = 0; // pointer pixels
    int y = 0;
    int unused = 0;
    Vector3<float> position;
    Vector3<float> normal;
    float radius = 0.0f; // half the brush size, in own units
    Pbr material;
    uint32_t mask = 0;
    int extra[5] = {0, 0, 0, 0, 0};
    float pressure = 1.0f;
};

} // namespace vel
