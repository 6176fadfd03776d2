#include "Scene/Commands/CommandSaveCurve.h"

#include "Core/Assert.h"

namespace vel {

namespace {

Curve* asCurve(Shared<Element> const& element)
{
    VEL_ASSERT(element);
    auto* curve = dynamic_cast<Curve*>(element.get());
    VEL_ASSERT_MSG(curve, "a curve snapshot is taken of a curve");
    return curve;
}

} // namespace

CommandSaveCurve::CommandSaveCurve(Shared<Element> const& element, int type)
    : Command(type)
    , element(element)
    , curve(asCurve(element))
    , snapshot(*curve)
{
}

void CommandSaveCurve::undo()
{
    curve->swap(snapshot);
    Command::undo();
}

void CommandSaveCurve::redo()
{
    curve->swap(snapshot);
    Command::redo();
}

} // namespace vel
