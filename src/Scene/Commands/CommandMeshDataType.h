// CommandMeshDataType: a change of a mesh's data type (plain, per-corner materials, per-corner
// UVs), holding the type and the two corner arrays it decides; undo and redo exchange them
// with the mesh's. Built before the change, pushed after it; the half-edges must be the same
// in both states.
#pragma once

#include "Math/Pbr.h"
#include "Memory/Shared.h"
#include "Scene/Command.h"
#include "Scene/Elements/Mesh/ChunkedSequence.h"

#include <cstdint>
#include <string>

namespace vel {

class Element;
class Mesh;

class CommandMeshDataType : public Command {
public:
    static constexpr int TYPE = 54;

    Shared<Element> element;
    Mesh* mesh;
    int dataType;
    ChunkedSequence<Pbr> materials;
    ChunkedSequence<uint32_t> uvs;

    explicit CommandMeshDataType(Shared<Element> const& element);

    void undo() override;
    void redo() override;
    std::string name() override;
    void swap();
};

} // namespace vel
