#include "Scene/Commands/CommandSubdivideMesh.h"

namespace vel {

CommandSubdivideMesh::CommandSubdivideMesh(Shared<Element> const& element, bool smooth)
    : CommandSaveMesh(element, TYPE)
    , smooth(smooth)
{
}

void CommandSubdivideMesh::undo()
{
    Mesh coarse(snapshot);
    mesh->swap(coarse);
    Command::undo();
}

void CommandSubdivideMesh::redo()
{
    mesh->subdivide(smooth);
    Command::redo();
}

std::string CommandSubdivideMesh::name()
{
    return "Subdivide Mesh";
}

} // namespace vel
