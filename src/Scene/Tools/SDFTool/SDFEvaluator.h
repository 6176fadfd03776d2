// SDFEvaluator: the distance of an SDF tree at a point, on the processor.
//
// It reads a gathered list as the generated shader does: entries in priority order, each
// in its own space by the transform from the first entry's space (the space of
// evaluation), scaled back by the cube root of that transform's determinant, shaped,
// repeated, clipped and shelled, then combined with the value so far by its operation,
// blend and joint. Bracket counts group the expression: a group is combined into the
// enclosing value with the operation of the entry that opened it; the first value of a
// group ignores its own operation. Paint entries do not change the distance.
//
// It is the reference of the shader and of the conversion to meshes, and serves picking.
// Build once per change of the list, then call `distance` as often as needed: it does no
// allocation and is safe to call from several threads.
//
// Index (SDFEvaluator.cpp)
// - building: order, transforms, scales, clip boxes, arrays, and the tree's bounds
// - the pieces: shapes, operations and blends, joints, one entry, the whole list
#pragma once

#include "Math/AABB.h"
#include "Math/Matrix34.h"
#include "Math/Vector3.h"
#include "Scene/Tools/SDFTool/SDFObj.h"
#include "Scene/Tools/SDFTool/SDFStruct.h"

#include <deque>
#include <vector>

namespace vel {

class SDFEvaluator {
public:
    static constexpr int MAX_DEPTH = 64; // groups open at once; deeper opens are ignored

    // One entry, with everything the distance needs precomputed.
    struct Entry {
        float m[12];        // first entry's space to this entry's space
        float scale = 1;    // SCALE: this entry's distances back into the space of evaluation
        int shape = 0;      // as evaluated (capped torus included)
        int opClass = 0;
        int op = 0;         // the shader's operation number
        int shell = 0;
        int joint = 0;
        int arrayType = 0;  // 0 when no array is active
        Vector3<float> h;   // half dims
        float R = 0;
        float thickness = 0; // half the shell thickness
        float falloff = 0;   // FALLOFF: scaled, and a tenth for Inflate
        float joint0 = 0;
        float joint1 = 0;
        float sinHalf = 0, cosHalf = 1; // capped torus
        bool clip = false;
        bool clipOnShell = false;
        Vector3<float> clipCenter, clipHalf;
        Vector3<float> step; // linear array spacing per axis
        int counts[3] = {1, 1, 1};
        int rotCount = 1;     // circular copies
        float angleStep = 0;  // circular: angle between copies
        float angleLimit = 0; // circular: angles from here on stay unfolded
        float radius = 0;     // circular: distance of the copies from the axis
        int open = 0;  // groups opened before this entry
        int close = 0; // groups closed after it
    };

    std::vector<Entry> entries;
    Matrix34<double> base; // the world into the space of evaluation
    AABB bounds;           // of the tree, in the space of evaluation, padded by 2%

    // From a gathered list (the order of priority is taken here, stably).
    void build(std::deque<SDFStruct> const& list);
    // From primitives and their world matrices, already in order.
    void build(std::vector<SDFObj> const& objs, std::vector<Matrix34<double>> const& worlds);

    bool empty() const { return entries.empty(); }
    // The distance at p in the space of evaluation; 1e3 for an empty list.
    float distance(Vector3<float> const& p) const;
    // The distance at a point of the world.
    float distanceWorld(Vector3<double> const& p) const;

    // The pieces, for tests and for the shader's reference.
    static float shapeDistance(Entry const& e, Vector3<float> q);
    static float opBlend(int op, float falloff, float r, float a);
    static float applyJoint(int joint, float r, float a, float joint0, float joint1);
    float entryDistance(int i, Vector3<float> const& p) const;
    float combine(int i, float r, float a) const;

private:
    void computeBounds(std::vector<AABB> const& boxes);
};

} // namespace vel
