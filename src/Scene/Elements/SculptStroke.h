// SculptStroke: a sculpt or paint stroke on an element that sculpts on the CPU (Mesh, Curve).
// It keeps the stroke's start (positions, or materials for paint) for the steps that deform
// from the start and for the undo record, and runs each call of the element's `sculpt`:
// prepare the step, apply it through the Deformers, write the result back, and at the end
// push the undo command.
//
// The element type T provides: `verts` (records with `position` and `is(1)` for active),
// `materials` (per corner) and `dataType`, `PointSculptSmooth(int)`, `sculptCornerVertex(int)`
// (the vertex a material slot belongs to), `sculptMoved(touched)` (normals or frames of the
// touched vertices, buffers dirty), `sculptPainted()`, `swapPositions`, `swapMaterials`.
//
// One stroke runs at a time (one viewport, one brush); its buffers keep their capacity from
// stroke to stroke, and the per-step arrays come from the brush and curve scratch pads.
#pragma once

#include <algorithm>
#include <cstring>
#include <deque>
#include <vector>

#include "Core/Assert.h"
#include "Deformers/Deformers.h"
#include "Deformers/SculptStep.h"
#include "Deformers/Sculptor.h"
#include "Math/Pbr.h"
#include "Math/Vector3.h"
#include "Memory/ScratchpadMemory.h"
#include "Memory/Shared.h"
#include "Scene/Elements/SculptRecords.h"
#include "Scene/SceneHistory.h"

namespace vel {

class Element;

class SculptStroke {
public:
    Element const* owner = nullptr; // the element of the running stroke, null between strokes
    bool paint = false;
    bool promoted = false;          // the data type was raised to materials for this stroke
    int savedDataType = 0;          // the type before that
    std::vector<Vector3<float>> start;
    std::vector<Pbr> startMaterials;
    // The stamp of actions 21 to 24, lent by the rendering side (which owns the image); kept
    // across strokes, and without values a stamp step does nothing.
    StampAlpha stamp;
    std::vector<int> touched; // the vertices the last step moved

    // The stroke of the CPU path (main thread only).
    static SculptStroke& Current();

    void clear();

    // The brush of Sculptor::gSculptAction, else of the stroke's action, else the defaults.
    static SculptStep Prepare(std::deque<Sculptor*> const& sculptors, int index, unsigned char phase);

    // The material a paint step gives a slot of weight `w` (not yet clamped), from `from`.
    static Pbr Painted(int action, Pbr const& from, float w);
    // `from` moved towards `to` by min(w, 1) in the parts `mask` selects (BrushMaterialMask bits).
    static Pbr Mix(Pbr const& from, Pbr const& to, float w, int mask);

    // Begins a stroke on `e` (at the gesture's begin, or when a step finds another owner).
    template <class T>
    void begin(T& e, bool painting);

    // One step on `e`'s positions or materials; true when it changed something.
    template <class T>
    bool step(T& e, std::deque<Sculptor*>& sculptors, int index, unsigned char phase);
    // The part of a step that holds the brush and curve pads.
    template <class T>
    SculptOutput stepInPads(T& e, std::deque<Sculptor*>& sculptors, int index, unsigned char phase);

    // The changes since the start, as records holding the start's values.
    template <class T>
    std::deque<IndexPosition> positionsDiff(T const& e) const;
    template <class T>
    std::deque<IndexMaterial> materialsDiff(T const& e) const;
};

// The element's sculptStep: one step of the stroke, begun on `e` when it runs elsewhere.
template <class T>
void RunSculptStep(T& e, std::deque<Sculptor*>& sculptors, int index, unsigned char phase);

// Exchanges each record's value with the element's (undo and redo alike).
template <class T>
void SwapSculptPositions(T& e, std::deque<IndexPosition>& records);
template <class T>
void SwapSculptMaterials(T& e, std::deque<IndexMaterial>& records);

// The whole of one `sculpt` call: begin, step, and at the end the undo command, pushed to
// History when it records: "Sculpt Positions", or for paint "Paint Vertices", inside a
// "Paint ..." group (`paintGroup`) with the data type command when the stroke raised the type.
// `MakeTypeCommand(e)` builds that command from the element's current state.
template <class T, class SculptCommand, class PaintCommand, class MakeTypeCommand>
void RunSculpt(T& e, std::deque<Sculptor*>& sculptors, char const* paintGroup, MakeTypeCommand makeTypeCommand);

// ---- templates --------------------------------------------------------------------------

template <class T>
void SculptStroke::begin(T& e, bool painting)
{
    clear();
    owner = &e;
    paint = painting;
    if (paint) {
        if (e.dataType == 0) {
            savedDataType = e.dataType;
            e.setDataType(1);
            promoted = true;
        }
        startMaterials.resize(e.materials.size());
        for (std::size_t c = 0; c < startMaterials.size(); ++c)
            startMaterials[c] = e.materials[c];
    } else {
        start.resize(e.verts.size());
        for (std::size_t i = 0; i < start.size(); ++i)
            start[i] = e.verts[i].position;
    }
}

template <class T>
bool SculptStroke::step(T& e, std::deque<Sculptor*>& sculptors, int index, unsigned char phase)
{
    // The element is told after the pads are given back: its normals may need one.
    SculptOutput const out = stepInPads(e, sculptors, index, phase);
    if (out == SculptOutput::DEFORMATIONS)
        e.sculptMoved(touched);
    else if (out == SculptOutput::WEIGHTS)
        e.sculptPainted();
    return out != SculptOutput::NOTHING;
}

template <class T>
SculptOutput SculptStroke::stepInPads(T& e, std::deque<Sculptor*>& sculptors, int index, unsigned char phase)
{
    touched.clear();
    SculptStep const s = Prepare(sculptors, index, phase);
    int const count = int(e.verts.size());
    if (s.skip || count == 0)
        return SculptOutput::NOTHING;
    bool const absolute = SculptAbsoluteAction(s.action);
    ScratchPadBrush::Lease brushPad;
    ScratchPadCurve::Lease curvePad;
    Vector3<float>* p = curvePad.at<Vector3<float>>(0, std::size_t(count));
    Vector3<float>* sum = brushPad.at<Vector3<float>>(0, std::size_t(count));
    float* weights = brushPad.at<float>(std::size_t(count) * sizeof(Vector3<float>), std::size_t(count));
    for (int i = 0; i < count; ++i) {
        p[i] = absolute && std::size_t(i) < start.size() ? start[std::size_t(i)] : e.verts[std::size_t(i)].position;
        sum[i] = Vector3<float>();
        weights[i] = 0.0f;
    }
    SculptOutput out = ApplySculptStep(s, count, p, sum, weights, [&e](int i) { return e.PointSculptSmooth(i); },
                                       stamp.values ? &stamp : nullptr);
    if (out == SculptOutput::DEFORMATIONS) {
        for (int i = 0; i < count; ++i) {
            auto& v = e.verts[std::size_t(i)];
            if (!v.is(1))
                continue;
            Vector3<float> moved = p[i] + sum[i];
            if (moved != v.position) {
                v.position = moved;
                touched.push_back(i);
            }
        }
        return touched.empty() ? SculptOutput::NOTHING : SculptOutput::DEFORMATIONS;
    }
    if (out != SculptOutput::WEIGHTS || e.materials.size() != startMaterials.size())
        return SculptOutput::NOTHING;
    // Absolute paints (gradient, fill) mix from the stroke's start, the others from now.
    bool const fromStart = s.action == 42 || s.action == 43 || s.action == 45 || s.action == 46 ||
                           s.action == 48 || s.action == 49;
    std::size_t const slotCount = e.materials.size();
    // Smooth paint mixes each slot towards the mean of the slots of its vertex.
    std::vector<Pbr> means;
    if (s.action == 33) {
        std::vector<fPbr> sums(static_cast<std::size_t>(count));
        std::vector<int> counts(std::size_t(count), 0);
        for (std::size_t c = 0; c < slotCount; ++c) {
            int v = e.sculptCornerVertex(int(c));
            if (v < 0 || v >= count || !(weights[v] > 0.0f))
                continue;
            fPbr f(e.materials[c], false);
            fPbr& t = sums[std::size_t(v)];
            for (int k = 0; k < 4; ++k) {
                t.color[k] += f.color[k];
                t.light[k] += f.light[k];
            }
            t.rough += f.rough;
            t.metal += f.metal;
            ++counts[std::size_t(v)];
        }
        means.resize(std::size_t(count));
        for (std::size_t v = 0; v < means.size(); ++v) {
            if (counts[v] == 0)
                continue;
            fPbr& t = sums[v];
            float const inv = 1.0f / float(counts[v]);
            for (int k = 0; k < 4; ++k) {
                t.color[k] *= inv;
                t.light[k] *= inv;
            }
            t.rough *= inv;
            t.metal *= inv;
            means[v] = Pbr(t, false);
        }
    }
    bool changed = false;
    for (std::size_t c = 0; c < slotCount; ++c) {
        int v = e.sculptCornerVertex(int(c));
        if (v < 0 || v >= count)
            continue;
        Pbr const& from = fromStart ? startMaterials[c] : e.materials[c];
        Pbr painted = !(weights[v] > 0.0f) ? from
                      : s.action == 33     ? Mix(from, means[std::size_t(v)], weights[v], 63)
                                           : Painted(s.action, from, weights[v]);
        if (painted != e.materials[c]) {
            e.materials[c] = painted;
            changed = true;
        }
    }
    return changed ? SculptOutput::WEIGHTS : SculptOutput::NOTHING;
}

template <class T>
std::deque<IndexPosition> SculptStroke::positionsDiff(T const& e) const
{
    std::deque<IndexPosition> out;
    std::size_t const n = std::min(start.size(), std::size_t(e.verts.size()));
    for (std::size_t i = 0; i < n; ++i)
        if (std::memcmp(&start[i], &e.verts[i].position, sizeof(Vector3<float>)) != 0)
            out.push_back(IndexPosition{int(i), start[i]});
    return out;
}

template <class T>
std::deque<IndexMaterial> SculptStroke::materialsDiff(T const& e) const
{
    std::deque<IndexMaterial> out;
    std::size_t const n = std::min(startMaterials.size(), std::size_t(e.materials.size()));
    for (std::size_t i = 0; i < n; ++i)
        if (startMaterials[i] != e.materials[i])
            out.push_back(IndexMaterial{int(i), startMaterials[i]});
    return out;
}

template <class T>
void RunSculptStep(T& e, std::deque<Sculptor*>& sculptors, int index, unsigned char phase)
{
    VEL_ASSERT_MSG(phase <= 2, "a step is 0 begin, 1 progress or 2 end");
    VEL_ASSERT_MSG(index >= 0, "a step processes a sample of the stroke");
    if (sculptors.empty() || !sculptors.front())
        return;
    SculptStroke& stroke = SculptStroke::Current();
    bool const paint = SculptPaintAction(sculptors.front()->action);
    if (stroke.owner != &e || stroke.paint != paint)
        stroke.begin(e, paint);
    stroke.step(e, sculptors, index, phase);
}

template <class T>
void SwapSculptPositions(T& e, std::deque<IndexPosition>& records)
{
    std::vector<int> touched;
    touched.reserve(records.size());
    for (IndexPosition& r : records) {
        VEL_ASSERT_MSG(r.index >= 0 && std::size_t(r.index) < e.verts.size(), "a record of this element's vertices");
        std::swap(e.verts[std::size_t(r.index)].position, r.position);
        touched.push_back(r.index);
    }
    e.sculptMoved(touched);
}

template <class T>
void SwapSculptMaterials(T& e, std::deque<IndexMaterial>& records)
{
    for (IndexMaterial& r : records) {
        VEL_ASSERT_MSG(r.index >= 0 && std::size_t(r.index) < e.materials.size(), "a record of this element's materials");
        std::swap(e.materials[std::size_t(r.index)], r.material);
    }
    e.sculptPainted();
}

template <class T, class SculptCommand, class PaintCommand, class MakeTypeCommand>
void RunSculpt(T& e, std::deque<Sculptor*>& sculptors, char const* paintGroup, MakeTypeCommand makeTypeCommand)
{
    if (sculptors.empty() || !sculptors.front() || sculptors.front()->count() == 0)
        return;
    Sculptor const& first = *sculptors.front();
    SculptStroke& stroke = SculptStroke::Current();
    bool const paint = SculptPaintAction(first.action);
    if (first.Begin() || stroke.owner != &e || stroke.paint != paint)
        stroke.begin(e, paint);
    int const n = first.count();
    // As on the GPU: an end with fewer than three samples makes no last step.
    if (!first.End() || n >= 3)
        stroke.step(e, sculptors, n - 1, first.Begin() ? 0 : first.End() ? 2 : 1);
    if (!first.End())
        return;
    History& history = History::instance();
    if (history.recording()) {
        if (paint) {
            std::deque<IndexMaterial> diff = stroke.materialsDiff(e);
            if (stroke.promoted && diff.empty()) {
                e.setDataType(stroke.savedDataType);
                e.sculptPainted();
            } else if (stroke.promoted) {
                // The type change is its own command: undone, the element has no materials.
                history.superBegin(paintGroup, false);
                auto painted = e.materials;
                int const raised = e.dataType;
                e.setDataType(stroke.savedDataType);
                auto* type = makeTypeCommand(e);
                e.setDataType(raised);
                e.materials = painted;
                history.push(type);
                history.push(new PaintCommand(Shared<Element>(&e, true), std::move(diff)));
                history.superEnd();
            } else if (!diff.empty()) {
                history.push(new PaintCommand(Shared<Element>(&e, true), std::move(diff)));
            }
        } else {
            std::deque<IndexPosition> diff = stroke.positionsDiff(e);
            if (!diff.empty())
                history.push(new SculptCommand(Shared<Element>(&e, true), std::move(diff)));
        }
    }
    stroke.clear();
}

} // namespace vel
