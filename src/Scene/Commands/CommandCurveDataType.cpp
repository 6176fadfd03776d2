#include "Scene/Commands/CommandCurveDataType.h"

#include "Core/Assert.h"
#include "Scene/Elements/Curve/Curve.h"

#include <utility>

namespace vel {

CommandCurveDataType::CommandCurveDataType(Shared<Element> const& element)
    : Command(TYPE)
    , element(element)
    , curve(dynamic_cast<Curve*>(element.get()))
{
    VEL_ASSERT_MSG(curve, "a curve type is changed on a curve");
    dataType = curve->dataType;
    materials = curve->materials;
    uvs = curve->uvs;
}

void CommandCurveDataType::undo()
{
    swap();
    Command::undo();
}

void CommandCurveDataType::redo()
{
    swap();
    Command::redo();
}

std::string CommandCurveDataType::name()
{
    return "Curve Type";
}

void CommandCurveDataType::swap()
{
    VEL_ASSERT_MSG(materials.size() == (dataType == 1 ? 2 * curve->edges.size() : 0),
                   "the edges are the same in both states");
    std::swap(curve->dataType, dataType);
    curve->materials.swap(materials);
    curve->uvs.swap(uvs);
    curve->update();
}

} // namespace vel
