// CommandSaveMesh: a snapshot of a mesh's whole arrays, for changes whose inverse would
// cost more than a copy. Built just before the change, pushed after it; undo and redo both
// exchange the snapshot with the live mesh.
#pragma once

#include "Memory/Shared.h"
#include "Scene/Command.h"
#include "Scene/Elements/Mesh/Mesh.h"

namespace vel {

class CommandSaveMesh : public Command {
public:
    static constexpr int TYPE = 52;

    Shared<Element> element; // keeps the mesh alive while the step exists
    Mesh* mesh;              // the same element, as a mesh
    Mesh snapshot;           // the other state

    explicit CommandSaveMesh(Shared<Element> const& element, int type = TYPE);

    void undo() override;
    void redo() override;
};

} // namespace vel
