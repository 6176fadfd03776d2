// SDFObj: the parameters of one signed-distance primitive, a plain value.
//
// Sizes in `dims` are full sizes; everything that evaluates or bounds the shape halves
// them first (h = dims / 2). A torus keeps its angle in degrees in dims.z; below 360 it is
// evaluated as the capped torus (shape 8), which the panel never offers by itself.
//
// The record of the SDF fields in scene files (95 bytes in the current version) is read
// by version: each version adds fields at the end, and fields a version lacks keep their
// defaults. Reading never trusts the values: `repair` brings every field into its range.
//
// Index (SDFObj.cpp)
// - comparison and derived values
// - bounds
// - the record
#pragma once

#include "Math/AABB.h"
#include "Math/Vector3.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vel {

class IFile;
class OFile;

// Shape numbers: the eight of the panel, then the shader-only capped torus.
constexpr int SDF_SPHERE = 0;
constexpr int SDF_ELLIPSOID = 1;
constexpr int SDF_BOX = 2;
constexpr int SDF_CYLINDER = 3;
constexpr int SDF_TORUS = 4;
constexpr int SDF_CHAINLINK = 5;
constexpr int SDF_CAPSULE = 6;
constexpr int SDF_BICAPSULE = 7;
constexpr int SDF_CAPPED_TORUS = 8;
constexpr int SDF_PANEL_SHAPES = 8;

// Operation classes; the shader's operation number is (class - 1) * 3 + blend.
constexpr int SDF_NOOP = 0;
constexpr int SDF_ADD = 1;
constexpr int SDF_SUB = 2;
constexpr int SDF_INT = 3;
constexpr int SDF_PAINT = 4;
constexpr int SDF_INFLATE = 5;
constexpr int SDF_DEFLATE = 6;
constexpr int SDF_OPERATIONS = 7;

constexpr int SDF_SHELL_SOLID = 0;
constexpr int SDF_SHELL_INNER = 1;
constexpr int SDF_SHELL_OUTER = 2;
constexpr int SDF_SHELL_SYMMETRIC = 3;

constexpr int SDF_JOINT_NONE = 0;
constexpr int SDF_JOINT_ROUND = 1;
constexpr int SDF_JOINT_QUAD = 2;
constexpr int SDF_JOINT_RHOMB = 3;

constexpr int SDF_BLEND_SHARP = 0;
constexpr int SDF_BLEND_FILLET = 1;
constexpr int SDF_BLEND_CHAMFER = 2;

constexpr int SDF_ARRAY_LINEAR = 1;
constexpr int SDF_ARRAY_X = 2;
constexpr int SDF_ARRAY_Y = 4;
constexpr int SDF_ARRAY_Z = 6;

// The first versions of the scene format that carry each group of SDF fields.
constexpr int SDF_VERSION_PAINT_FALLOFF = 20230302;
constexpr int SDF_VERSION_TORUS_ANGLE = 20230303;
constexpr int SDF_VERSION_CURRENT = 20230711;

struct SDFObj {
    static constexpr int DATA_SIZE = 95; // bytes of the current record

    Vector3<float> dims{1, 1, 1}; // full sizes; see the shape table
    Vector3<float> step{2, 2, 2}; // linear array spacing, as a factor of the half size
    Vector3<float> clip0{-1, -1, -1}; // lower clip per axis, -1..1 of the bounds
    Vector3<float> clip1{1, 1, 1};    // upper clip per axis
    float joint0 = 0.05f;
    float joint1 = 0.05f;
    float R = 0;            // rounding radius of box and cylinder
    float thickness = 0;    // shell thickness
    float falloff = 0;      // blend radius or strength of the operation
    float paintFalloff = 0; // softness of the colour transition
    float arrayRadius = 0;  // circular array: radius as a factor of a half size
    float arrayAngle = 6.2831855f; // circular array: total angle in radians
    uint8_t shape = SDF_SPHERE;
    uint8_t operation = SDF_NOOP;
    uint8_t shell = SDF_SHELL_SOLID;
    uint8_t joint = SDF_JOINT_NONE;
    uint8_t blend = SDF_BLEND_SHARP;
    uint8_t nx = 1, ny = 1, nz = 1; // linear array counts
    uint8_t count = 1; // circular array count
    uint8_t arrayType = SDF_ARRAY_LINEAR;
    uint8_t clipShell = 0; // clip after the shell rather than before
    int16_t priority = 0;  // place in the evaluation order
    int16_t bracket = 0;   // positive opens that many parentheses before, negative closes after

    // Index of the first differing field (0 shape; 1-6 dims, step; 7-8 joints; 9-14 clips;
    // 15-20 R, thickness, falloff, paint falloff, array radius, array angle; 21-28 operation,
    // shell, joint, blend, nx, ny, nz, count; 29 clip shell; 30 array type), -1 if none.
    // Priority and bracket are not parameters and are not compared.
    int difference(SDFObj const& other) const;
    // Keeps clip1 at least 0.001 above clip0 on every axis, inside -1..1.
    void validate_clipping();
    // Half-counts that centre a linear array; zero when no array is active.
    Vector3<float> n() const;
    bool arrayActive() const;
    bool clipActive() const;
    // The shape as evaluated: a torus under 360 degrees is the capped torus.
    int shaderShape() const;
    Vector3<float> halfDims() const { return dims * 0.5f; }

    // Bounds in the shape's own space.
    AABB obb_tight() const;
    AABB _obb_full_shape() const;
    AABB _obb_tight_shape() const;
    void _obb_add_shell(AABB& box) const;
    void _obb_array(AABB& box, AABB const& shapeBox) const;
    // The box that a circular array sweeps in its plane (axes a and b of the box).
    static void _obb_rot(AABB& box, AABB const& shapeBox, int a, int b, double radius, double angle, int copies);
    // The clip box inside `box`: -1..1 maps to its bounds on each axis.
    AABB clipBox(AABB const& box) const;

    // ---- the scene-file record of the SDF fields ----
    static int DataSize() { return DATA_SIZE; }
    void DataWrite(OFile& out) const;
    // Reads the fields that `version` carries; false when the stream ends first (the
    // fields read so far stay, the others keep their values).
    bool DataRead(IFile& in, int version);
    // Brings every field into its range (shapes, classes, counts, finite numbers, clips);
    // returns one line per repair, empty when the record was sound.
    std::vector<std::string> repair();
};

} // namespace vel
