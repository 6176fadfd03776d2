#include "Scene/Elements/SculptStroke.h"

#include "Deformers/BrushProperties.h"

namespace vel {

SculptStroke& SculptStroke::Current()
{
    static SculptStroke stroke;
    return stroke;
}

void SculptStroke::clear()
{
    // Sizes go, capacity stays for the next stroke; the stamp stays lent.
    owner = nullptr;
    paint = false;
    promoted = false;
    savedDataType = 0;
    start.clear();
    startMaterials.clear();
}

SculptStep SculptStroke::Prepare(std::deque<Sculptor*> const& sculptors, int index, unsigned char phase)
{
    Brushes& brushes = GetBrushes();
    auto found = brushes.find(Sculptor::gSculptAction);
    if (found == brushes.end() && !sculptors.empty() && sculptors.front())
        found = brushes.find(sculptors.front()->action);
    if (found == brushes.end() || !found->second.object)
        return PrepareSculptStep(sculptors, index, phase, BrushProperties());
    return PrepareSculptStep(sculptors, index, phase, *found->second.object);
}

Pbr SculptStroke::Painted(int action, Pbr const& from, float w)
{
    // 41-43 lay the brush's material, 44-46 erase the chosen channels, 47-49 erase them all.
    Pbr const brush = action >= 41 && action <= 43 ? BrushMaterial : Pbr();
    return Mix(from, brush, w, action >= 47 ? 63 : BrushMaterialMask);
}

Pbr SculptStroke::Mix(Pbr const& from, Pbr const& to, float w, int mask)
{
    w = std::min(w, 1.0f);
    fPbr a(from, false);
    fPbr const b(to, false);
    auto mix = [w](float& x, float y, bool on) {
        if (on)
            x += (y - x) * w;
    };
    for (int i = 0; i < 3; ++i) {
        mix(a.color[i], b.color[i], mask & 1);
        mix(a.light[i], b.light[i], mask & 4);
    }
    mix(a.color[3], b.color[3], mask & 2);
    mix(a.light[3], b.light[3], mask & 8);
    mix(a.rough, b.rough, mask & 16);
    mix(a.metal, b.metal, mask & 32);
    return Pbr(a, false);
}

} // namespace vel
