// Clay: the sculptors' entry of a stroke and the step of each action, from the prepared step
// record that the CPU deformers read too.
#include "Scene/Elements/Mesh/Clay.h"

#include "Deformers/BrushProperties.h"
#include "Deformers/SculptStep.h"
#include "Deformers/Sculptor.h"


namespace vel {

Texture2D* Clay::StampAlpha = nullptr;

namespace {

// The paint brush's values: the brush material for 41 to 43; the default material under the
// mask for 44 to 46 (erasing the chosen channels); the default with every channel for 47 to 49.
ClayBrushMaterial PaintBrush(int action, Pbr const& material, int mask)
{
    Pbr const plain;
    Pbr const& m = action >= 44 ? plain : material;
    if (action >= 47)
        mask = 63;
    ClayBrushMaterial b;
    b.colorAlpha = {float(m.color(0)), float(m.color(1)), float(m.color(2)), float(m.color(3))};
    b.lightThick = {float(m.light(0)), float(m.light(1)), float(m.light(2)), float(m.light(3))};
    auto on = [mask](int bit) { return (mask & bit) ? 1.0f : 0.0f; };
    b.masks = {on(1), on(2), on(4), on(8)};
    b.roughMetal = {float(m.rough()), float(m.metal()), on(16), on(32)};
    return b;
}

BrushProperties const& BrushOf(int action)
{
    Brushes& brushes = GetBrushes();
    // The brush key names the brush; outside sculpt mode the stroke's own action does.
    int const key = Sculptor::gSculptAction != 81 ? Sculptor::gSculptAction : action;
    auto found = brushes.find(key);
    if (found == brushes.end() || !found->second.object)
        found = brushes.find(81);
    return *found->second.object;
}

} // namespace

void Clay::sculpt(std::deque<Sculptor*>& sculptors)
{
    if (sculptors.empty() || sculptors.front()->count() == 0)
        return;
    Sculptor const& first = *sculptors.front();
    ClayStrokeState const state = first.Begin() ? ClayStrokeState::Begin
                                  : first.End() ? ClayStrokeState::End
                                                : ClayStrokeState::Progress;
    SBrush const& sample = first.samples.front();
    sculpt(
        first.action, first.count(), state,
        [&](int index, unsigned char phase) { sculptStep(sculptors, index, phase); },
        PaintBrush(first.action, sample.material, int(sample.mask)));
}

void Clay::sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase)
{
    if (sculptors.empty())
        return;
    int const action = sculptors.front()->action;
    SculptStep const s = PrepareSculptStep(sculptors, index, phase, BrushOf(action));
    bool const paint = PaintAction(action);
    // A step with nothing to do still clears what the runner applies after it.
    if (s.skip || s.centers.empty()) {
        if (paint)
            fillselect({}, 0.0f);
        else
            sculptmove({});
        return;
    }
    switch (action) {
    case 1:
        sculptmove(s.axes);
        break;
    case 3:
        sculptrotate(s.centers, s.frames);
        break;
    case 5:
        sculptscale(s.centers, s.factors);
        break;
    case 9:
        sculptscaledir(s.centers, s.axes, s.factors);
        break;
    case 12:
        sculptskew(s.centers, s.axes, s.modifs);
        break;
    case 13:
        sculptbend(s.centers, s.axes, s.modifs, s.factors.empty() ? s.radius : s.factors.front());
        break;
    case 14:
        sculpttaper(s.centers, s.axes, s.modifs);
        break;
    case 16:
        sculptswirl(s.centers, s.factors, s.swirlAxis);
        break;
    case 17:
    case 18:
        addsubdir(s.centers, s.seconds, s.thirds, s.radius, s.falloff, s.strength, s.height, s.add);
        break;
    case 19:
    case 20:
        crease(s.centers, s.seconds, s.thirds, s.radius, s.falloff, s.strength, s.add);
        break;
    case 21:
    case 22:
    case 23:
    case 24:
        // The steps of 23 and 24 hold half the drag already: the pass halves nothing more.
        if (StampAlpha)
            addsubstamp(s.centers, s.seconds, s.thirds, s.flips, s.strength, s.add, false, StampAlpha);
        else
            sculptmove({});
        break;
    case 25:
    case 26:
    case 27:
    case 28:
    case 39:
        addsub(s.centers, s.thirds, s.radius, s.falloff, s.strength, s.height, s.add);
        break;
    case 29:
        deform(s.centers, s.seconds, s.radius, s.falloff);
        break;
    case 30:
        deformVolume(s.centers, s.frames, s.weight, s.radius);
        break;
    case 32:
        smooth(s.centers, s.intensity, s.radius);
        break;
    case 33:
        paintselect(s.centers, s.radius, s.falloff, s.intensity);
        break;
    case 36:
    case 37:
        pinch(s.centers, s.intensity, s.radius);
        break;
    case 38:
        twist(s.centers, s.seconds, s.cosA, s.sinA, s.radius);
        break;
    case 41:
    case 44:
    case 47:
        paintselect(s.centers, s.radius, s.falloff, s.strength);
        break;
    case 42:
    case 45:
    case 48:
        gradientselect(s.centers, s.seconds, s.strength);
        break;
    case 43:
    case 46:
    case 49:
        fillselect(s.centers, s.strength);
        break;
    default:
        // Stretch and the kinds with no step of their own on clay: nothing moves.
        if (paint)
            fillselect({}, 0.0f);
        else
            sculptmove({});
        break;
    }
}

} // namespace vel
