// CommandPaintVerts<T> ("Paint Vertices"): the material slots a CPU paint stroke changed on a
// Mesh or a Curve, as a sparse deque of index and Pbr, exchanged by swapMaterials.
#pragma once

#include "Scene/Commands/CommandSwapRecords.h"

#include <string>

namespace vel {

template <class T>
class CommandPaintVerts : public CommandSwapRecords<T, IndexMaterial> {
public:
    static constexpr int TYPE = 91;

    CommandPaintVerts(Shared<Element> const& element, std::deque<IndexMaterial> records)
        : CommandSwapRecords<T, IndexMaterial>(TYPE, element, std::move(records))
    {
    }

    std::string name() override { return "Paint Vertices"; }
};

} // namespace vel
