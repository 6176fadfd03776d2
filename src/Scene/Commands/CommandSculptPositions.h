// CommandSculptPositions<T> ("Sculpt Positions"): the vertices a CPU sculpt stroke moved on a
// Mesh or a Curve, as a sparse deque of index and position, exchanged by swapPositions.
#pragma once

#include "Scene/Commands/CommandSwapRecords.h"

#include <string>

namespace vel {

template <class T>
class CommandSculptPositions : public CommandSwapRecords<T, IndexPosition> {
public:
    static constexpr int TYPE = 90;

    CommandSculptPositions(Shared<Element> const& element, std::deque<IndexPosition> records)
        : CommandSwapRecords<T, IndexPosition>(TYPE, element, std::move(records))
    {
    }

    std::string name() override { return "Sculpt Positions"; }
};

} // namespace vel
