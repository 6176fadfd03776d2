// SculptStep: what one step of a stroke hands to the deformers, prepared from the sculptors'
// samples as plain data, so that the GPU (Clay) and the CPU (Mesh, Curve) paths read the same
// centres, directions and scalars. Vectors hold one entry per sculptor; scalars come from
// sculptor 0 and the other copies reuse them.
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
};

// The axis pair of Skew, Bend, Taper and Swirl (0..5; above 5 gives zero vectors), and the
// weight of each axis; a key press advances both.
extern int gAxes;
extern Vector3<float> gSculptAxes;
void AdvanceSculptAxes();

// The step of sample `index` (C = min(index, last), P = max(index - 1, 0), F = 0) at `phase`
// (0 begin, 1 progress, 2 end), with the brush of Sculptor::gSculptAction.
SculptStep PrepareSculptStep(std::deque<Sculptor*> const& sculptors, int index, unsigned char phase,
                             BrushProperties const& brush);

} // namespace vel
