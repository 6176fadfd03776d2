// SculptGesture: one sculpt stroke of the viewport, from the press on a surface to the
// release, and the brush settings the strokes read.
//
// The press makes one Sculptor per symmetric copy of the brush; every later pointer event
// appends one sample to each (no spacing, no interpolation: a fast stroke makes fewer,
// longer steps) and runs one step through the tool; the release adds the last sample, ends
// the gestures and runs the last step, after which the sculptors go. The element records the
// stroke's undo step itself. A press on nothing makes no sculptors, and the moves that follow
// do nothing. Nothing here touches GL: the steps do, inside the element.
#pragma once

#include "Math/Matrix34.h"
#include "Math/Pbr.h"
#include "OpenGL/ABrush.h"

#include "Deformers/BrushProperties.h"

#include <deque>
#include <vector>

namespace vel {

class Sculptor;
class Tool;

// ---- the brush globals ----
extern float BrushSize;        // brush diameter in pointer pixels, 1..2000
extern float BrushBlockSize;   // the world diameter kept while the size is locked
extern bool gLockBrushSize;    // Shift+L: the brush keeps its world size when the view zooms
extern bool gPenPressure;      // Shift+P: the pen's pressure reaches the strokes

// The settings of the keys X, Y, Z (mirror through that plane of the element) and
// Shift+X, Y, Z (`count` copies turned about that axis).
struct SculptSymmetry {
    bool mirror[3] = {false, false, false};
    bool rotate[3] = {false, false, false};
    int count = 4;
};

class SculptGesture {
public:
    std::deque<Sculptor*> sculptors; // one per symmetric copy, during a stroke
    Tool* target = nullptr;          // the tool under the press
    SculptSymmetry symmetry;
    Matrix34<double> frame;          // the symmetry frame: the element's, at the press
    bool brushChanged = false;       // a brush setting changed during a stamp drag
    double pixelsPerUnit = 0.0;      // at the brush's last place: what a lock of the size keeps

    SculptGesture() = default;
    ~SculptGesture();
    SculptGesture(SculptGesture const&) = delete;
    SculptGesture& operator=(SculptGesture const&) = delete;

    bool active() const { return !sculptors.empty(); }
    // The brush and its symmetric copies, about `frame`.
    std::vector<ABrush> copies(ABrush const& brush) const;
    // On a hit: the sculptors, their first samples and the first step; false (nothing made)
    // without one.
    bool begin(ABrush const& brush, int action, int select, int property);
    // One sample more for every copy, and a step.
    void progress(ABrush const& brush);
    // The last sample, the end of the gesture, the last step; the sculptors go.
    void end(ABrush const& brush);
    // Drops the stroke's step state in the element; the sculptors go.
    void cancel();
    // The step of the present samples through the tool.
    void step();
    void clear();

    // ---- brush settings, as GLView's setters apply them (the brush of Sculptor::gSculptAction)
    static void SetFalloff(float value);    // clamped to 0..1
    static void SetStrength(float value);   // clamped to 0..1, the interface is told
    static void SetElevation(float value);  // clamped to -1..1
    static void SetSize(float pixels);      // clamped to 1..2000
    // Scales the size; during a stamp drag (actions 21 to 24) the strength instead, and the
    // stroke takes the change at its next updateSculpt.
    void mulSize(float factor);
    // The brush diameter in world units where a world unit spans `pixels` pixels; remembers
    // the scale for a lock of the size.
    float worldSize(double pixels);
    // The key press the sculpt settings act on (brush keys, symmetry); false when the key is
    // not theirs.
    bool keyPressed(int qtKey, bool control, bool shift, bool idle);
};

} // namespace vel
