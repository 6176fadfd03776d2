// The sparse records of a CPU sculpt or paint stroke's undo: a vertex (or material slot) and
// the value that is not shown. Undo and redo exchange them with the element.
#pragma once

#include "Math/Pbr.h"
#include "Math/Vector3.h"

namespace vel {

struct IndexPosition {
    int index = 0;
    Vector3<float> position;
};

struct IndexMaterial {
    int index = 0;
    Pbr material;
};

} // namespace vel
