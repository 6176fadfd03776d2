// Mesh: sculpting and painting on the CPU, one step per frame of a stroke, with the formulas
// of the clay shaders (Deformers) and the stroke's start kept by SculptStroke.
#include "Scene/Elements/Mesh/Mesh.h"

#include "Scene/Commands/CommandMeshDataType.h"
#include "Scene/Commands/CommandPaintVerts.h"
#include "Scene/Commands/CommandSculptPositions.h"
#include "Scene/Elements/SculptStroke.h"

namespace vel {

void Mesh::sculpt(std::deque<Sculptor*>& sculptors)
{
    // Kinds whose working positions live elsewhere (clay on the GPU) sculpt on their own.
    if (Type() != 1)
        return;
    RunSculpt<Mesh, CommandSculptPositions<Mesh>, CommandPaintVerts<Mesh>>(
        *this, sculptors, "Paint Mesh",
        [](Mesh& m) { return new CommandMeshDataType(Shared<Element>(&m, true)); });
}

void Mesh::sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase)
{
    RunSculptStep(*this, sculptors, index, phase);
}

void Mesh::swapPositions(std::deque<IndexPosition>& records)
{
    SwapSculptPositions(*this, records);
}

void Mesh::swapMaterials(std::deque<IndexMaterial>& records)
{
    SwapSculptMaterials(*this, records);
}

int Mesh::sculptCornerVertex(int corner) const
{
    return edges[std::size_t(corner)].v[1];
}

void Mesh::sculptMoved(std::vector<int> const& touched)
{
    // Both give the same bits; past a quarter of the mesh one pass over all is the cheaper.
    if (touched.size() * 4 > verts.size())
        calculateNormals();
    else
        updateNormals(touched);
    set_vbos_dirty(true);
    update();
}

void Mesh::sculptPainted()
{
    set_vbos_dirty(true);
    update();
}

} // namespace vel
