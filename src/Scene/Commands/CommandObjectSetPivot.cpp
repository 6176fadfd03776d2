#include "Scene/Commands/CommandObjectSetPivot.h"

#include "Scene/Tool.h"

#include <utility>

namespace vel {

CommandObjectSetPivot::CommandObjectSetPivot(Tool* tool, Matrix34<double> const& pivot)
    : Command(TYPE)
    , tool(tool)
    , pivot(pivot)
{
}

void CommandObjectSetPivot::undo()
{
    swap();
    Command::undo();
}

void CommandObjectSetPivot::redo()
{
    swap();
    Command::redo();
}

std::string CommandObjectSetPivot::name()
{
    return "Set Pivot";
}

void CommandObjectSetPivot::swap()
{
    std::swap(tool->pivotMatrix, pivot);
}

} // namespace vel
