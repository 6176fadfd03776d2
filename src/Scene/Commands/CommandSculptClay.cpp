#include "Scene/Commands/CommandSculptClay.h"

#include "Scene/Elements/Mesh/Clay.h"

#include <utility>

namespace vel {

CommandSculptClay::CommandSculptClay(Clay* clay, std::unordered_map<int, Vector3<float>> map)
    : Command(TYPE)
    , map(std::move(map))
    , clay(clay)
{
}

void CommandSculptClay::undo()
{
    clay->swap_positions(map);
    Command::undo();
}

void CommandSculptClay::redo()
{
    clay->swap_positions(map);
    Command::redo();
}

std::string CommandSculptClay::name()
{
    return "Sculpt Clay";
}

} // namespace vel
