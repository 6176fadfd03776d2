// CommandPaintVerts<T> ("Paint Vertices"): the material slots a CPU paint stroke changed on a
// Mesh or a Curve, as a sparse deque of index and Pbr. Undo and redo are the same
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
class CommandPaintVerts : public Command {
public:
    static constexpr int TYPE = 91;

    Shared<Element> element;
    T* target;
    std::deque<IndexMaterial> records;

    CommandPaintVerts(Shared<Element> const& element, std::deque<IndexMaterial> records);

    void undo() override;
    void redo() override;
    int size() override;
    std::string name() override;
};

} // namespace vel
