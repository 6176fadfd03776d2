// CommandPaintClay ("Paint Clay"): the corner materials a clay paint stroke changed, as a
// sparse map from half-edge to the four words of its Pbr. Undo and redo are the same exchange
// of the map with the clay's current materials.
#pragma once

#include "Scene/Command.h"

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace vel {

class Clay;

class CommandPaintClay : public Command {
public:
    static constexpr int TYPE = 56;

    std::unordered_map<int, std::array<uint32_t, 4>> map;
    Clay* clay;

    CommandPaintClay(Clay* clay, std::unordered_map<int, std::array<uint32_t, 4>> map);

    void undo() override;
    void redo() override;
    std::string name() override;
};

} // namespace vel
