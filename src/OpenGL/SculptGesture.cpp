#include "OpenGL/SculptGesture.h"

#include "Core/Communicate.h"
#include "Deformers/BrushProperties.h"
#include "Deformers/Sculptor.h"
#include "Deformers/Symmetry.h"
#include "OpenGL/ViewportActions.h"
#include "Scene/Element.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Tool.h"

#include <QtCore/qnamespace.h>

#include <algorithm>

namespace vel {

float BrushSize = 50.0f;
float BrushBlockSize = 0.1f;
bool gLockBrushSize = false;
bool gPenPressure = true;

namespace {

constexpr float BRUSH_SIZE_MIN = 1.0f;
constexpr float BRUSH_SIZE_MAX = 2000.0f;
constexpr float SIZE_STEP = 1.1f;  // ] and [ (its inverse)
constexpr float ELEVATION_STEP = 0.05f;

bool StampAction(int action)
{
    return action >= 21 && action <= 24;
}

// The brush the setters change: the sculptor's key, or the chosen action outside a stroke.
BrushProperties& Brush()
{
    Brushes& brushes = GetBrushes();
    auto found = brushes.find(Sculptor::gSculptAction);
    if (found == brushes.end() || !found->second.object)
        found = brushes.find(81);
    return *found->second.object;
}

// The brush a function key chooses in sculpt mode; 0 for none.
int SculptKeyAction(int key, bool control, bool shift)
{
    switch (key) {
    case Qt::Key_F1: return control ? 30 : 29; // Deform, Deform Volume
    case Qt::Key_F2: return control ? 23 : 21; // the stamps, centred or by ends
    case Qt::Key_F3: return control ? 28 : 27; // Clay, Scrape
    case Qt::Key_F4: return shift ? 43 : control ? 42 : 41; // Paint, Fill, Gradient
    case Qt::Key_F5: return control ? 20 : 19; // Crease, Ridge
    default: return 0;
    }
}

} // namespace

SculptGesture::~SculptGesture()
{
    clear();
}

void SculptGesture::clear()
{
    for (Sculptor* s : sculptors)
        delete s;
    sculptors.clear();
    target = nullptr;
    brushChanged = false;
}

std::vector<ABrush> SculptGesture::copies(ABrush const& brush) const
{
    SymmetryCopy first;
    first.position = brush.world;
    first.normal = brush.normal;
    first.frame = Matrix34<double>(Matrix3<double>::Frame_Z(brush.normal), brush.world);
    first.mirror = brush.mirror;
    SculptSymmetry const& s = symmetry;
    std::vector<ABrush> out;
    for (SymmetryCopy const& c : vel::symmetry(first, frame, s.mirror[0], s.mirror[1], s.mirror[2], s.rotate[0],
                                               s.rotate[1], s.rotate[2], s.count)) {
        ABrush b = brush;
        b.world = c.position;
        b.normal = c.normal;
        b.mirror = c.mirror;
        out.push_back(b);
    }
    return out;
}

bool SculptGesture::begin(ABrush const& brush, int action, int select, int property)
{
    clear();
    if (!brush.hit() || !brush.tool->element || action == 50)
        return false;
    target = brush.tool;
    frame = brush.elementMatrix;
    for (ABrush const& copy : copies(brush)) {
        SBrush const first = copy.ToSBrush();
        auto* s = new Sculptor(action, select, property, copy.mirror, false, first.normal * float(copy.mirror));
        s->add(first);
        s->_begin();
        sculptors.push_back(s);
    }
    step();
    return true;
}

void SculptGesture::progress(ABrush const& brush)
{
    if (!active())
        return;
    std::vector<ABrush> const now = copies(brush);
    for (std::size_t i = 0; i < sculptors.size() && i < now.size(); ++i) {
        sculptors[i]->_progress();
        sculptors[i]->add(now[i].ToSBrush());
    }
    step();
}

void SculptGesture::end(ABrush const& brush)
{
    if (!active())
        return;
    std::vector<ABrush> const now = copies(brush);
    for (std::size_t i = 0; i < sculptors.size() && i < now.size(); ++i) {
        sculptors[i]->add(now[i].ToSBrush());
        sculptors[i]->_end();
    }
    step();
    clear();
}

void SculptGesture::cancel()
{
    if (target && target->element)
        target->element->cancel_sculpt();
    clear();
}

void SculptGesture::step()
{
    // Through the tool: it refuses what cannot be sculpted, and stamps without a stamp.
    if (!Tool::gSculptStampReady)
        Tool::gSculptStampReady = [] { return Clay::StampAlpha != nullptr; };
    if (active() && target)
        target->sculpt(sculptors);
    brushChanged = false;
}

// ---- brush settings

void SculptGesture::SetFalloff(float value)
{
    Brush().falloff = std::clamp(value, 0.0f, 1.0f);
}

void SculptGesture::SetStrength(float value)
{
    BrushProperties& b = Brush();
    b.strength = std::clamp(value, 0.0f, 1.0f);
    emit Communicate::instance().UpdateUIBrushStrength(b.strength);
}

void SculptGesture::SetElevation(float value)
{
    Brush().elevation = std::clamp(value, -1.0f, 1.0f);
}

void SculptGesture::SetSize(float pixels)
{
    BrushSize = std::clamp(pixels, BRUSH_SIZE_MIN, BRUSH_SIZE_MAX);
    emit Communicate::instance().UpdateUIBrushSize(BrushSize);
}

void SculptGesture::mulSize(float factor)
{
    if (active() && StampAction(sculptors.front()->action)) {
        SetStrength(Brush().strength * factor);
        brushChanged = true;
        return;
    }
    if (gLockBrushSize)
        BrushBlockSize *= factor;
    else
        SetSize(BrushSize * factor);
}

float SculptGesture::worldSize(double pixels)
{
    if (pixels > 0.0)
        pixelsPerUnit = pixels;
    if (gLockBrushSize)
        return BrushBlockSize;
    return pixels > 0.0 ? float(double(BrushSize) / pixels) : 0.0f;
}

bool SculptGesture::keyPressed(int key, bool control, bool shift, bool idle)
{
    if (ActionMode == MODE_SCULPT && idle) {
        if (int const action = SculptKeyAction(key, control, shift)) {
            gSetSculptAction(action);
            return true;
        }
    }
    switch (key) {
    case Qt::Key_BracketRight:
    case Qt::Key_BracketLeft: {
        bool const up = key == Qt::Key_BracketRight;
        if (control)
            SetElevation(Brush().elevation + (up ? ELEVATION_STEP : -ELEVATION_STEP));
        else
            mulSize(up ? SIZE_STEP : 1.0f / SIZE_STEP);
        return true;
    }
    case Qt::Key_L:
        if (!shift || control)
            return false;
        gLockBrushSize = !gLockBrushSize;
        // The world size under the pointer is what stays.
        if (gLockBrushSize && pixelsPerUnit > 0.0)
            BrushBlockSize = float(double(BrushSize) / pixelsPerUnit);
        emit Communicate::instance().LockBrushSize();
        return true;
    case Qt::Key_P:
        if (!shift || control)
            return false;
        gPenPressure = !gPenPressure;
        return true;
    case Qt::Key_X:
    case Qt::Key_Y:
    case Qt::Key_Z: {
        // Ctrl+Z and Ctrl+Shift+Z are undo and redo; a stroke keeps its copies.
        if (control || !idle)
            return false;
        int const axis = key - Qt::Key_X;
        bool& on = shift ? symmetry.rotate[axis] : symmetry.mirror[axis];
        on = !on;
        return true;
    }
    default:
        return false;
    }
}

} // namespace vel
