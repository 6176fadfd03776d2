// CommandSculptClay ("Sculpt Clay"): the positions a clay stroke changed, as a sparse map from
// vertex to position. Undo and redo are the same exchange of the map with the clay's current
// positions, so the map always holds the state that is not shown.
#pragma once

#include "Math/Vector3.h"
#include "Scene/Command.h"

#include <string>
#include <unordered_map>

namespace vel {

class Clay;

class CommandSculptClay : public Command {
public:
    static constexpr int TYPE = 55;

    std::unordered_map<int, Vector3<float>> map;
    Clay* clay;

    CommandSculptClay(Clay* clay, std::unordered_map<int, Vector3<float>> map);

    void undo() override;
    void redo() override;
    std::string name() override;
};

} // namespace vel
