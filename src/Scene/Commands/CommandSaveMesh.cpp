#include "Scene/Commands/CommandSaveMesh.h"

#include "Core/Assert.h"

namespace vel {

namespace {

Mesh* asMesh(Shared<Element> const& element)
{
    VEL_ASSERT(element);
    auto* mesh = dynamic_cast<Mesh*>(element.get());
    VEL_ASSERT_MSG(mesh, "a mesh snapshot is taken of a mesh");
    return mesh;
}

} // namespace

CommandSaveMesh::CommandSaveMesh(Shared<Element> const& element, int type)
    : Command(type)
    , element(element)
    , mesh(asMesh(element))
    , snapshot(*mesh)
{
}

void CommandSaveMesh::undo()
{
    mesh->swap(snapshot);
    Command::undo();
}

void CommandSaveMesh::redo()
{
    mesh->swap(snapshot);
    Command::redo();
}

} // namespace vel
