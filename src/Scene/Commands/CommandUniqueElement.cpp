#include "Scene/Commands/CommandUniqueElement.h"

#include "Core/Assert.h"
#include "Scene/Tool.h"

namespace vel {

CommandUniqueElement::CommandUniqueElement(Tool* tool, Shared<Element> const& element)
    : CommandChangeObject(TYPE, tool)
    , element(element)
{
    VEL_ASSERT(tool);
}

void CommandUniqueElement::swap()
{
    Shared<Element> shown = tool->element;
    tool->setElement(element);
    element = shown;
}

std::string CommandUniqueElement::name()
{
    return "Unique Element";
}

} // namespace vel
