#include "Scene/Elements/Curve/UCurve.h"

#include "Core/Communicate.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"

#include <cmath>

namespace vel {

namespace {

constexpr int VERSION_STRAY_VALUE = 20181221; // before: one more 4-byte value, unused

} // namespace

UCurve::UCurve(Shared<Element> const& base, float spacing)
    : base(base)
    , spacing(spacing)
{
    update();
}

Curve* UCurve::BaseCurve()
{
    return dynamic_cast<Curve*>(base.get());
}

Element* UCurve::clone()
{
    return new UCurve(base, spacing);
}

void UCurve::update()
{
    Curve* b = BaseCurve();
    if (!b || b->activeEdges() == 0) {
        verts.clear();
        edges.clear();
        vertFrames.clear();
        params.clear();
        Curve::update();
        return;
    }
    float s = spacing;
    std::vector<float> radii;
    std::vector<std::pair<int, bool>> chains;
    std::vector<Vector3<float>> points = b->Uniform(s, params, true, false, 0, &radii, &chains);
    // One chain after another, each closed as its base chain is.
    verts.clear();
    edges.clear();
    vertFrames.clear();
    hasFrames = b->hasFrames;
    size_t at = 0;
    for (auto const& [count, closed] : chains) {
        int first = int(verts.size());
        for (int i = 0; i < count; ++i, ++at) {
            if (hasFrames)
                vertAddFrame(points[at], radii[at], 0.0f, false);
            else
                vertAdd(points[at], false);
        }
        for (int i = first; i + 1 < first + count; ++i)
            edgeAdd(i, i + 1, -1, -1, false, false);
        if (closed && count > 2)
            edgeAdd(first + count - 1, first, -1, -1, false, false);
    }
    center = b->center;
    scale = b->scale;
    buildConnectivity();
    setComponentsPatches();
    Curve::update();
}

int64_t UCurve::ready()
{
    // Follows the base: resampled when it moved on past this curve.
    if (base && base->ready() > updateStamp)
        update();
    return updateStamp;
}

void UCurve::elements(std::vector<Element*>& out)
{
    out.push_back(this);
    if (base)
        base->elements(out);
}

void UCurve::identify(std::vector<Shared<Element>> const& elements)
{
    if (baseId >= 0 && size_t(baseId) < elements.size() && dynamic_cast<Curve*>(elements[size_t(baseId)].get()) &&
        elements[size_t(baseId)].get() != this) {
        base = elements[size_t(baseId)];
    } else {
        LogInfo("A uniform curve's base curve is missing: it stays empty.", 1);
        base = Shared<Element>();
    }
    baseId = -1;
    update();
}

void UCurve::sculpt(std::deque<Sculptor*>& sculptors)
{
    if (base)
        base->sculpt(sculptors);
    update();
}

void UCurve::DataWrite(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(BlockId());
    out.writeValue(unsigned(DataSize()));
    out.writeValue(spacing);
    auto found = base ? ids.find(base.get()) : ids.end();
    out.writeValue(found != ids.end() ? found->second : -1);
}

bool UCurve::DataReadU(IFile& in, int version)
{
    if (!in.readValue(spacing) || !in.readValue(baseId))
        return false;
    if (!std::isfinite(spacing))
        spacing = 0;
    int unused = 0;
    return version >= VERSION_STRAY_VALUE || in.readValue(unused);
}

} // namespace vel
