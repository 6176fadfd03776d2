// CommandSubdivideMesh: a subdivision as one step. The snapshot keeps the mesh from before;
// undo gives the mesh a copy of it, and redo subdivides again, so that the snapshot is the
// coarse mesh in either state.
#pragma once

#include "Scene/Commands/CommandSaveMesh.h"

#include <string>

namespace vel {

class CommandSubdivideMesh : public CommandSaveMesh {
public:
    static constexpr int TYPE = 53;

    bool smooth; // the subdivision's own argument, repeated by redo

    // Built before `mesh->subdivide(smooth)`, pushed after it.
    CommandSubdivideMesh(Shared<Element> const& element, bool smooth);

    void undo() override;
    void redo() override;
    std::string name() override;
};

} // namespace vel
