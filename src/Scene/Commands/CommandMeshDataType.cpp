#include "Scene/Commands/CommandMeshDataType.h"

#include "Core/Assert.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <utility>

namespace vel {

CommandMeshDataType::CommandMeshDataType(Shared<Element> const& element)
    : Command(TYPE)
    , element(element)
    , mesh(dynamic_cast<Mesh*>(element.get()))
{
    VEL_ASSERT_MSG(mesh, "a mesh type is changed on a mesh");
    dataType = mesh->dataType;
    materials = mesh->materials;
    uvs = mesh->uvs;
}

void CommandMeshDataType::undo()
{
    swap();
    Command::undo();
}

void CommandMeshDataType::redo()
{
    swap();
    Command::redo();
}

std::string CommandMeshDataType::name()
{
    return "Mesh Type";
}

void CommandMeshDataType::swap()
{
    VEL_ASSERT_MSG(mesh->materials.size() == (mesh->dataType == 1 ? mesh->edges.size() : 0) &&
                       materials.size() == (dataType == 1 ? mesh->edges.size() : 0),
                   "the half-edges are the same in both states");
    std::swap(mesh->dataType, dataType);
    mesh->materials.swap(materials);
    mesh->uvs.swap(uvs);
    mesh->set_vbos_dirty(true);
    mesh->update();
}

} // namespace vel
