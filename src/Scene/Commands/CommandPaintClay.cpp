#include "Scene/Commands/CommandPaintClay.h"

#include "Scene/Elements/Mesh/Clay.h"

#include <utility>

namespace vel {

CommandPaintClay::CommandPaintClay(Clay* clay, std::unordered_map<int, std::array<uint32_t, 4>> map)
    : Command(TYPE)
    , map(std::move(map))
    , clay(clay)
{
}

void CommandPaintClay::undo()
{
    clay->swap_materials(map);
    Command::undo();
}

void CommandPaintClay::redo()
{
    clay->swap_materials(map);
    Command::redo();
}

std::string CommandPaintClay::name()
{
    return "Paint Clay";
}

} // namespace vel
