// CommandReplaceElement: the element of a set of tools that share one (a shape and its
// twins), exchanged for another, as when a shape is converted. The command holds the element
// the targets do not show; both directions swap it with theirs through setElement.
#pragma once

#include "Memory/Shared.h"
#include "Scene/Commands/CommandChangeObjects.h"
#include "Scene/Element.h"

#include <string>
#include <vector>

namespace vel {

class CommandReplaceElement : public CommandChangeObjects {
public:
    static constexpr int TYPE = 50;

    Shared<Element> element; // the element the targets do not show now

    // Either built with the old element after the targets were given the new one, or with
    // the new one followed by a single swap().
    CommandReplaceElement(std::vector<Tool*> const& targets, Shared<Element> const& element);

    void swap() override;
    std::string name() override;
};

} // namespace vel
