// ABrush: the snapshot of the cursor that every gesture starts from: where it is on screen
// and in the world, what it hit and how hard the pen pressed. GLView keeps one for the
// press and one for the current position.
#pragma once

#include "Deformers/SBrush.h"
#include "Math/Matrix34.h"
#include "Math/Pbr.h"
#include "Math/Vector2.h"
#include "Math/Vector3.h"
#include "OpenGL/TPickResult.h"

#include <cstdint>

namespace vel {

class Element;
class Tool;

struct ABrush {
    // What a selection asks for; POSITION: the position alone, no hit needed.
    enum TSelection { OBJECT = 0, SURFACE = 1, POSITION = 10 };

    Vector2<float> screen;    // pointer pixels, y down
    double depth = 1.0;       // depth buffer value under the pointer
    Vector3<double> world;    // the point under the pointer (at the working depth on a miss)
    Vector3<double> normal;   // world
    TPickResult pick;         // the ids read back
    Tool* tool = nullptr;     // the tool the ids name, null on a miss
    Tool* object = nullptr;   // the object that answers for it
    Element* element = nullptr;
    float pressure = 1.0f;    // after the pressure curve
    bool in_vr = false;
    // What a stroke sample takes along (ToSBrush).
    int kind = 0;             // handed to the sample as its first int
    int select = 3;           // iSculptSelect of the stroke
    int property = 0;         // iSculptProperty of the stroke
    Matrix34<double> elementMatrix; // the hit element's own coordinates to the world
    Pbr material;             // under the brush
    uint16_t mask = 0;        // material channels the brush writes
    float size = 0.0f;        // brush diameter in world units at the hit
    signed char mirror = 1;   // -1 for a copy an odd number of mirrors made

    // The sample of a stroke in the element's own coordinates: point and normal through the
    // inverse of `elementMatrix`, the radius measured along the normal the same way.
    SBrush ToSBrush() const;

    bool hit() const { return pick.hit && tool; }
    // Whether two snapshots stand on the same pixel.
    static bool SameMousePosition(ABrush const& a, ABrush const& b);
};

// The pen's raw pressure (0..1) through the user's curve: gamma `exponent`, then the floor
// `minimum` lifted so that a light touch still paints.
float PressureCurve(float raw, float exponent, float minimum);

} // namespace vel
