// CommandTransformObjects: the object and pivot matrices of every target, swapped with the
// live ones. A move, rotation, scale or alignment of a selection is one such step.
#pragma once

#include "Math/Matrix34.h"
#include "Scene/Commands/CommandChangeObjects.h"

#include <deque>
#include <string>
#include <vector>

namespace vel {

class CommandTransformObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 48;

    std::deque<Matrix34<double>> objects; // object matrices, in the order of `targets`
    std::deque<Matrix34<double>> pivots;  // pivot matrices, likewise

    // Takes the targets' present matrices.
    explicit CommandTransformObjects(std::vector<Tool*> const& targets);

    void swap() override;
    // Merges a drag: same targets in the same order.
    bool isSame(Command* previous) override;
    std::string name() override;
};

} // namespace vel
