// CommandUniqueElement: one tool's element exchanged for another, so that a shape shared by
// twins can become private to one of them (the other element is usually a clone).
#pragma once

#include "Memory/Shared.h"
#include "Scene/Commands/CommandChangeObject.h"
#include "Scene/Element.h"

#include <string>

namespace vel {

class CommandUniqueElement : public CommandChangeObject {
public:
    static constexpr int TYPE = 51;

    Shared<Element> element; // the element the tool does not show now

    // Either built with the old element after the tool was given the new one, or with the
    // new one followed by a single swap().
    CommandUniqueElement(Tool* tool, Shared<Element> const& element);

    void swap() override;
    std::string name() override;
};

} // namespace vel
