// CommandSculptPositions<T> ("Sculpt Positions"): the vertices a CPU sculpt stroke moved on a
// Mesh or a Curve, as a sparse deque of index and position. Undo and redo are the same
// exchange of the records with the element, so they always hold the state that is not shown.
#pragma once

#include "Memory/Shared.h"
#include "Scene/Command.h"
#include "Scene/Elements/SculptRecords.h"

#include <deque>
#include <string>

namespace vel {

class Element;

template <class T>
class CommandSculptPositions : public Command {
public:
    static constexpr int TYPE = 90;

    Shared<Element> element;
    T* target;
    std::deque<IndexPosition> records;

    CommandSculptPositions(Shared<Element> const& element, std::deque<IndexPosition> records);

    void undo() override;
    void redo() override;
    int size() override;
    std::string name() override;
};

} // namespace vel
