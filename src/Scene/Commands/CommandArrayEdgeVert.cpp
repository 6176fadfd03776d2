#include "Scene/Commands/CommandArrayEdgeVert.h"

#include "Scene/SceneHistory.h"
#include "Scene/Tools/Array/Array.h"
#include "Scene/Tools/Array/Snake.h"

namespace vel {

CommandArrayEdgeVert::CommandArrayEdgeVert(Tool* tool)
    : Command(TYPE)
    , toolId(tool->id)
    , tool(tool)
{
}

void CommandArrayEdgeVert::Flip(Tool* tool)
{
    if (auto* array = dynamic_cast<Array*>(tool))
        array->edgeMode ^= 1;
    else if (auto* snake = dynamic_cast<Snake*>(tool))
        snake->itemsMode ^= 1;
}

bool CommandArrayEdgeVert::Toggle(Tool* tool)
{
    if (!tool || !tool->isArray())
        return false;
    Flip(tool);
    History::instance().push(new CommandArrayEdgeVert(tool));
    return true;
}

void CommandArrayEdgeVert::undo()
{
    if (Tool::Alive(toolId))
        Flip(tool);
    Command::undo();
}

void CommandArrayEdgeVert::redo()
{
    if (Tool::Alive(toolId))
        Flip(tool);
    Command::redo();
}

std::string CommandArrayEdgeVert::name()
{
    return "Array Edge/Vert";
}

} // namespace vel
