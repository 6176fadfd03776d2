// SculptStep: what one step of a stroke hands to the deformers, prepared from the sculptors'
// samples as plain data, so that the GPU (Clay) and the CPU (Mesh, Curve) paths read the same
// centres, directions and scalars. Vectors hold one entry per sculptor; scalars come from
// sculptor 0 and the other copies reuse them.
//
// With C = sample min(index, last), P = sample max(index - 1, 0), F = sample 0 of each sculptor,
// s = the brush strength (halved at phase 0 except for paint), and the vectors per sculptor i:
//
// action             | centers    | seconds         | thirds   | derived (prepared here)
// 1  Move            | F          | P               |          | axes = P - F (the move from the stroke's start)
// 3  Rotate          | F          | P               |          | frames = the full rotation about the sculptor's
//                    |            |                 |          |   axis (F.normal * mirror when that is zero) by
//                    |            |                 |          |   RotationAngle(amount); Clay subtracts identity
// 5  Scale           | F          | P               |          | factors = ScaleFactor(amount)
// 9  ScaleDirection  | F          | P               |          | axes = unit sculptor axis (as Rotate),
//                    |            |                 |          |   factors = ScaleFactor(amount)
// 10 Stretch         | F          | P               |          | as 9; no deformer applies it
// 12 Skew            | F          | P               |          | axes = axis * dot(P - F, axis) / F.radius,
//                    |            |                 |          |   modifs = modif (unit)
// 13 Bend            | F          | P               |          | axes = axis, modifs = modif, factors = R, the bend
//                    |            |                 |          |   radius F.radius / RotationAngle(amount); a
//                    |            |                 |          |   still bend has zero axes and modifs, R = F.radius
// 14 Taper           | F          | P               |          | axes = axis * RotationAngle(amount) / F.radius,
//                    |            |                 |          |   modifs = modif (unit)
// 16 Swirl           | F          | P               |          | factors = RotationAngle(amount) * mirror / F.radius
//                    |            |                 |          |   (angle per unit along axis); swirlAxis
// 17-20 Chisel..Ridge| P          | C - P           | P.normal | frames = SculptStrokeFrame(C - P, P.normal);
//                    |            |                 |          |   skip at index 0
// 21, 22 stamp       | F          | C - F           | F.normal | frames = SculptStrokeFrame(seconds, thirds), its
// 23, 24 stamp       | (F + C)/2  | (C - F) / 2     | F.normal |   y row negated where mirror < 0 (flips)
// 25-29 Add..Deform  | P          | C - P           | P.normal |
// 30 DeformVolume    | P          | C - P           |          | frames = rows (u, v, dir), identity for a step
//                    |            |                 |          |   under 1e-10 on every axis
// 32, 33 Smooth      | P          |                 |          |
// 36, 37 Grow, Pinch | P          |                 |          |
// 38 Twist           | F          | F.normal*mirror |          | cosA, sinA (skip when the turn is undefined)
// 39 Flatten         | F          |                 | F.normal |
// 41, 44, 47 Paint   | P          |                 |          |
// 42, 45, 48 Gradient| F          | P - F           |          | axes = (P - F) / |P - F|^2 (zero for no drag)
// 43, 46, 49 Fill    | F          |                 |          |
//
// Scalars: radius = P.radius for 17-20, 25-37, 39, 41, F.radius for the others; falloff and
// elevation from the brush; height = 1 for 25, 26, elevation otherwise; add = the actions that
// push along the normal (17, 19, 21, 23, 25, 27); amount = (P.x - F.x) * 0.001 (mouse pixels) for
// 3-16; weight = |C - P| for 30; intensity = min(4 * C.pressure * s * |C - P| / P.radius, 0.5) for
// 32, 33, s * C.pressure * |C - P| / P.radius for 37 and its negative for 36; strength = s except
// s * C.pressure for 41, 44, 47.
#pragma once

#include <deque>
#include <vector>

#include "Math/Matrix3.h"
#include "Math/Vector3.h"

namespace vel {

class Sculptor;
struct BrushProperties;

struct SculptStep {
    int action = 81;
    bool skip = false; // nothing to do for this step (no motion, a first sample that needs two...)

    std::vector<Vector3<float>> centers;
    std::vector<Vector3<float>> seconds; // displacement, direction or axis, by action
    std::vector<Vector3<float>> thirds;  // normal, by action
    std::vector<Matrix3<float>> frames;  // DeformVolume's (u, v, dir) rows; Rotate's rotations
    std::vector<float> factors;          // per sculptor: scale factors, swirl angles
    Vector3<float> axis;                 // Skew, Bend, Taper, Swirl: the pair gAxes chooses
    Vector3<float> modif;

    float strength = 0.0f; // from the brush, halved at phase 0 except for paint
    float falloff = 0.0f;
    float elevation = 0.0f;
    float radius = 0.0f;
    float amount = 0.0f;    // rotate, scale, bend...: (P.x - F.x) * 0.001
    float intensity = 0.0f; // smooth, grow, pinch
    float weight = 0.0f;    // DeformVolume: the step's length
    float cosA = 1.0f;      // Twist
    float sinA = 0.0f;

    std::vector<Vector3<float>> axes;   // per sculptor, the first derived direction (table above)
    std::vector<Vector3<float>> modifs; // per sculptor, the second derived direction
    std::vector<bool> flips;            // per sculptor: mirror < 0
    float height = 0.0f;                // add/sub: 1 for Add and Sub, the elevation otherwise
    bool add = true;                    // false: the normal is negated (sub, scrape, carve...)
    int swirlAxis = 2;                  // Swirl: 0 x, 1 y, 2 z, the largest component of `axis`
};

// The axis pair of Skew, Bend, Taper and Swirl (0..5; above 5 gives zero vectors), and the
// weight of each axis; a key press advances both.
extern int gAxes;
extern Vector3<float> gSculptAxes;
void AdvanceSculptAxes();
// The pair of gAxes value `which`: unit vectors, zero above 5 or below 0.
Vector3<float> SculptAxis(int which);
Vector3<float> SculptModif(int which);

// The step of sample `index` (C = min(index, last), P = max(index - 1, 0), F = 0) at `phase`
// (0 begin, 1 progress, 2 end), with the brush of Sculptor::gSculptAction.
SculptStep PrepareSculptStep(std::deque<Sculptor*> const& sculptors, int index, unsigned char phase,
                             BrushProperties const& brush);

// Painting actions: 33 and 41 to 49. They keep their full strength at phase 0.
bool SculptPaintAction(int action);
// Actions whose every step deforms the stroke's start (move, rotate, scale..., stamps), so a
// step replaces the previous one rather than adding to it.
bool SculptAbsoluteAction(int action);
// The turn of a drag of `amount` (radians; 1000 pixels make a full turn) and the scale it makes.
float RotationAngle(float amount);
float ScaleFactor(float amount);
// The frame of a stroke: x the direction, z the normal; when the two are nearly parallel (or
// the direction is zero) the direction is replaced by the axis of the normal's smallest
// component, so the frame stays valid.
Matrix3<float> SculptStrokeFrame(Vector3<float> direction, Vector3<float> const& normal);

} // namespace vel
