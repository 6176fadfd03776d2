#include "Scene/Commands/CommandSubdivideCurve.h"

namespace vel {

CommandSubdivideCurve::CommandSubdivideCurve(Shared<Element> const& element, bool smooth)
    : CommandSaveCurve(element, TYPE)
    , smooth(smooth)
{
}

void CommandSubdivideCurve::undo()
{
    Curve coarse(snapshot);
    curve->swap(coarse);
    Command::undo();
}

void CommandSubdivideCurve::redo()
{
    curve->subdivide(smooth);
    Command::redo();
}

std::string CommandSubdivideCurve::name()
{
    return "Subdivide Curve";
}

} // namespace vel
