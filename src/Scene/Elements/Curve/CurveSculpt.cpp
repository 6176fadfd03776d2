// Curve: sculpting and painting its points on the CPU, the same strokes as Mesh's.
#include "Scene/Elements/Curve/Curve.h"

#include "Scene/Commands/CommandCurveDataType.h"
#include "Scene/Commands/CommandPaintVerts.h"
#include "Scene/Commands/CommandSculptPositions.h"
#include "Scene/Elements/SculptStroke.h"

namespace vel {

void Curve::sculpt(std::deque<Sculptor*>& sculptors)
{
    RunSculpt<Curve, CommandSculptPositions<Curve>, CommandPaintVerts<Curve>>(
        *this, sculptors, "Paint Curve",
        [](Curve& c) { return new CommandCurveDataType(Shared<Element>(&c, true)); });
}

void Curve::sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase)
{
    RunSculptStep(*this, sculptors, index, phase);
}

Vector3<float> Curve::PointSculptSmooth(int v) const
{
    return vertSmoothPosition(v);
}

void Curve::swapPositions(std::deque<IndexPosition>& records)
{
    SwapSculptPositions(*this, records);
}

void Curve::swapMaterials(std::deque<IndexMaterial>& records)
{
    SwapSculptMaterials(*this, records);
}

int Curve::sculptCornerVertex(int slot) const
{
    return edges[std::size_t(slot / 2)].v[slot % 2];
}

void Curve::sculptMoved(std::vector<int> const&)
{
    // Frames follow the whole chain: they are rebuilt, not patched.
    update();
}

void Curve::sculptPainted()
{
    set_vbos_dirty(true);
    Element::update();
}

} // namespace vel
