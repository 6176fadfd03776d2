#include "Scene/Commands/CommandReplaceElement.h"

#include "Core/Assert.h"
#include "Scene/Tool.h"

namespace vel {

CommandReplaceElement::CommandReplaceElement(std::vector<Tool*> const& targets, Shared<Element> const& element)
    : CommandChangeObjects(TYPE, targets)
    , element(element)
{
    VEL_ASSERT_MSG(!targets.empty(), "a replacement has targets");
}

void CommandReplaceElement::swap()
{
    Shared<Element> shown = targets.front()->element;
    for (Tool* t : targets) {
        VEL_ASSERT_MSG(t->element == shown, "the targets of a replacement share one element");
        t->setElement(element);
    }
    element = shown;
}

std::string CommandReplaceElement::name()
{
    return "Replace Element";
}

} // namespace vel
