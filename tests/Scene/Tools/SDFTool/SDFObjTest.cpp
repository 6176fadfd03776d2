// SDFObj: field comparison, clip and array rules, bounds of each shape, and the record:
// round trip, every older layout built byte by byte, truncated and malformed records.
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/Tools/SDFTool/SDFObj.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

namespace vel {
namespace {

TEST(SDFObjTest, DifferenceNamesTheFirstChangedField)
{
    struct Case {
        std::function<void(SDFObj&)> change;
        int index;
    };
    Case const cases[] = {
        {[](SDFObj&) {}, -1},
        {[](SDFObj& o) { o.priority = 3; o.bracket = -1; }, -1},
        {[](SDFObj& o) { o.shape = 2; o.dims.x = 9; }, 0},
        {[](SDFObj& o) { o.dims.z = 9; }, 3},
        {[](SDFObj& o) { o.step.y = 9; }, 5},
        {[](SDFObj& o) { o.joint1 = 9; }, 8},
        {[](SDFObj& o) { o.clip1.z = 0; }, 14},
        {[](SDFObj& o) { o.arrayAngle = 1; }, 20},
        {[](SDFObj& o) { o.operation = 2; o.count = 3; }, 21},
        {[](SDFObj& o) { o.count = 3; }, 28},
        {[](SDFObj& o) { o.clipShell = 1; o.arrayType = 2; }, 29},
        {[](SDFObj& o) { o.arrayType = 2; }, 30},
    };
    for (Case const& c : cases) {
        SDFObj o;
        c.change(o);
        EXPECT_EQ(o.difference(SDFObj()), c.index);
    }
}

TEST(SDFObjTest, ClipsAndArrayHalfCounts)
{
    struct Clip {
        float lo, hi, lo2, hi2;
    };
    for (Clip c : {Clip{-1, 1, -1, 1}, Clip{0.5f, 0.2f, 0.5f, 0.501f}, Clip{0.9995f, 0.5f, 0.999f, 1}}) {
        SDFObj o;
        o.clip0.x = c.lo;
        o.clip1.x = c.hi;
        o.validate_clipping();
        EXPECT_FLOAT_EQ(o.clip0.x, c.lo2);
        EXPECT_FLOAT_EQ(o.clip1.x, c.hi2);
    }

    struct Array {
        int type, nx, ny, nz, count;
        Vector3<float> n;
    };
    for (Array a : {Array{1, 1, 1, 1, 5, {0, 0, 0}}, Array{1, 2, 3, 4, 1, {0.5f, 1, 1.5f}},
                    Array{2, 3, 3, 3, 1, {0, 0, 0}}, Array{4, 3, 1, 2, 2, {1, 0, 0.5f}}}) {
        SDFObj o;
        o.arrayType = uint8_t(a.type);
        o.nx = uint8_t(a.nx);
        o.ny = uint8_t(a.ny);
        o.nz = uint8_t(a.nz);
        o.count = uint8_t(a.count);
        EXPECT_EQ(o.n(), a.n) << "type " << a.type;
    }
}

TEST(SDFObjTest, BoundsOfEachShape)
{
    struct Case {
        int shape;
        Vector3<float> dims;
        Vector3<double> lo, hi;
        int evaluated = -1; // the shape as evaluated, where it is not the shape itself
    };
    // Half dims (1, 0.5, 2) unless said otherwise.
    Case const cases[] = {
        {SDF_SPHERE, {2, 1, 4}, {-1, -1, -1}, {1, 1, 1}},
        {SDF_ELLIPSOID, {2, 1, 4}, {-1, -0.5, -2}, {1, 0.5, 2}},
        {SDF_BOX, {2, 1, 4}, {-1, -0.5, -2}, {1, 0.5, 2}},
        {SDF_CYLINDER, {2, 1, 4}, {-1, -1, -0.5}, {1, 1, 0.5}},
        {SDF_TORUS, {2, 1, 360}, {-1.5, -1.5, -0.5}, {1.5, 1.5, 0.5}},
        {SDF_TORUS, {2, 1, 359.9f}, {-1.5, -1.5, -0.5}, {1.5, 1.5, 0.5}, SDF_CAPPED_TORUS},
        {SDF_TORUS, {2, 1, 180}, {-1.5, -0.5, -0.5}, {1.5, 1.5, 0.5}, SDF_CAPPED_TORUS}, // the upper half
        {SDF_TORUS, {2, 1, 90}, {-std::sqrt(0.5) - 0.5, std::sqrt(0.5) - 0.5, -0.5}, {std::sqrt(0.5) + 0.5, 1.5, 0.5},
         SDF_CAPPED_TORUS},
        {SDF_CHAINLINK, {2, 1, 4}, {-3.5, -1.5, -0.5}, {3.5, 1.5, 0.5}},
        {SDF_CAPSULE, {2, 1, 4}, {-1.5, -1, -1}, {1.5, 1, 1}},
        {SDF_BICAPSULE, {2, 1, 4}, {-3, -1, -1}, {2.5, 1, 1}},
    };
    for (Case const& c : cases) {
        SDFObj o;
        o.shape = uint8_t(c.shape);
        o.dims = c.dims;
        AABB box = o.obb_tight();
        EXPECT_EQ(o.shaderShape(), c.evaluated < 0 ? c.shape : c.evaluated) << "dims z " << c.dims.z;
        EXPECT_LT((box.min - c.lo).length() + (box.max - c.hi).length(), 1e-6) << "shape " << c.shape;
    }
}

TEST(SDFObjTest, ShellClipAndArraysWidenOrCutTheBounds)
{
    SDFObj o; // sphere of radius 0.5
    o.shell = SDF_SHELL_OUTER;
    o.thickness = 0.2f;
    EXPECT_NEAR(o.obb_tight().max.x, 0.7, 1e-6);
    o.shell = SDF_SHELL_SYMMETRIC;
    EXPECT_NEAR(o.obb_tight().max.x, 0.6, 1e-6);
    o.shell = SDF_SHELL_SOLID;
    o.clip0.x = 0; // keeps x from 0
    EXPECT_NEAR(o.obb_tight().min.x, 0, 1e-6);
    o.clip0.x = -1;
    o.nx = 3; // copies at -1, 0, 1 (step 2 of the half size 0.5)
    EXPECT_NEAR(o.obb_tight().max.x, 1.5, 1e-6);
    o.nx = 1;
    o.arrayType = SDF_ARRAY_Z;
    o.count = 2;
    o.arrayAngle = 3.14159265f; // copies at (+r, 0) and (-r, 0), r = 2 * 0.5
    o.arrayRadius = 2;
    AABB box = o.obb_tight();
    EXPECT_NEAR(box.min.x, -1.5, 1e-5);
    EXPECT_NEAR(box.max.x, 1.5, 1e-5);
    EXPECT_NEAR(box.max.y, 0.5, 1e-5);
}

// ---- the record ------------------------------------------------------------------------

// Every field away from its default, each group of the record on one line.
SDFObj Sample()
{
    SDFObj o;
    o.dims = {1.5f, 2.5f, 3.5f}, o.R = 0.1f, o.thickness = 0.2f, o.falloff = 0.3f, o.paintFalloff = 0.4f;
    o.shape = SDF_TORUS, o.operation = SDF_SUB, o.shell = 2, o.blend = 1;
    o.step = {3, 4, 5}, o.nx = 2, o.ny = 3, o.nz = 4;
    o.clip0 = {-0.5f, -0.4f, -0.3f}, o.clip1 = {0.3f, 0.4f, 0.5f}, o.clipShell = 1;
    o.arrayRadius = 1.25f, o.count = 6, o.arrayType = SDF_ARRAY_Y, o.arrayAngle = 2.5f;
    o.joint = 3, o.joint0 = 0.7f, o.joint1 = 0.8f, o.priority = 4, o.bracket = -2;
    return o;
}

// Writes fields of the sample in the order given and expects them read, as a layout does.
struct Put {
    OFile& out;
    SDFObj const& sample;
    SDFObj& expected;
    template <typename... T>
    void operator()(T SDFObj::*... fields)
    {
        ((out.writeValue(sample.*fields), expected.*fields = sample.*fields), ...);
    }
};

// Each version's layout, written here field by field, independently of DataWrite: every
// group of fields is written and expected together. DataWrite writes the current one.
TEST(SDFObjTest, EveryVersionReadsItsOwnLayout)
{
    using O = SDFObj;
    struct Group {
        int since; // the first version that has it
        std::function<void(Put&)> fields;
    };
    std::vector<Group> const groups = {
        {0, [](Put& put) { put(&O::dims, &O::R, &O::thickness, &O::falloff); }},
        {20230302, [](Put& put) { put(&O::paintFalloff); }},
        {0, [](Put& put) { put(&O::shape, &O::operation, &O::shell, &O::blend); }},
        {20230411, [](Put& put) { put(&O::step, &O::nx, &O::ny, &O::nz); }},
        {20230427, [](Put& put) { put(&O::clip0, &O::clip1, &O::clipShell); }},
        {20230501, [](Put& put) { put(&O::arrayRadius, &O::count, &O::arrayType); }},
        {20230513, [](Put& put) { put(&O::arrayAngle, &O::joint); }},
        {20230531, [](Put& put) { put(&O::joint0, &O::joint1); }},
        {20230711, [](Put& put) { put(&O::priority, &O::bracket); }},
    };
    SDFObj const s = Sample();
    for (int version :
         {20230301, 20230302, 20230410, 20230411, 20230427, 20230501, 20230513, 20230531, 20230710, 20230711}) {
        OFile out;
        SDFObj expected;
        Put put{out, s, expected};
        for (Group const& g : groups)
            if (version >= g.since)
                g.fields(put);
        if (version < 20230303)
            expected.dims.z = 360; // old tori are whole rings
        if (version == SDF_VERSION_CURRENT) {
            OFile written;
            s.DataWrite(written);
            EXPECT_EQ(written.bytes(), out.bytes()) << "DataWrite writes the current layout";
            EXPECT_EQ(int(written.bytes().size()), SDFObj::DataSize());
        }
        long long fields = static_cast<long long>(out.bytes().size());
        // What follows the fields is the next record, whatever the declared size said.
        out.writeValue(0xEEEEEEEEu);
        IFile in(QByteArray::fromStdString(out.bytes()));
        SDFObj o;
        ASSERT_TRUE(o.DataRead(in, version)) << version;
        EXPECT_EQ(in.pos(), fields) << version;
        EXPECT_EQ(o.difference(expected), -1) << version;
        EXPECT_EQ(o.priority, expected.priority) << version;
        EXPECT_EQ(o.bracket, expected.bracket) << version;
    }
}

TEST(SDFObjTest, TruncatedRecordsStopCleanly)
{
    OFile out;
    Sample().DataWrite(out);
    for (int length : {0, 5, 12, 28, 31, 50, 94}) {
        IFile in(QByteArray::fromStdString(out.bytes().substr(0, size_t(length))));
        SDFObj o;
        EXPECT_FALSE(o.DataRead(in, SDF_VERSION_CURRENT)) << length;
        o.repair();
        EXPECT_TRUE(o.repair().empty()) << "repaired values are in range, length " << length;
    }
}

TEST(SDFObjTest, MalformedValuesAreRepaired)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const inf = std::numeric_limits<float>::infinity();
    struct Case {
        std::function<void(SDFObj&)> damage;
        std::function<bool(SDFObj const&)> sound;
    };
    Case const cases[] = {
        {[](SDFObj& o) { o.shape = 200; }, [](SDFObj const& o) { return o.shape == SDF_SPHERE; }},
        {[](SDFObj& o) { o.shape = 8; }, [](SDFObj const& o) { return o.shape == SDF_TORUS; }},
        {[](SDFObj& o) { o.operation = 7; }, [](SDFObj const& o) { return o.operation == SDF_ADD; }},
        {[](SDFObj& o) { o.shell = 4; o.joint = 9; o.blend = 3; },
         [](SDFObj const& o) { return o.shell == 0 && o.joint == 0 && o.blend == 0; }},
        {[](SDFObj& o) { o.nx = 0; o.count = 0; }, [](SDFObj const& o) { return o.nx == 1 && o.count == 1; }},
        {[](SDFObj& o) { o.arrayType = 3; }, [](SDFObj const& o) { return o.arrayType == SDF_ARRAY_LINEAR; }},
        {[nan](SDFObj& o) { o.dims.y = nan; }, [](SDFObj const& o) { return o.dims.y == 1; }},
        {[inf, nan](SDFObj& o) { o.falloff = -inf; o.arrayAngle = nan; },
         [](SDFObj const& o) { return o.falloff == 0 && o.arrayAngle == SDFObj().arrayAngle; }},
        {[](SDFObj& o) { o.clip0.y = 3; o.clip1.y = -7; },
         [](SDFObj const& o) { return o.clip0.y == 0.999f && o.clip1.y == 1; }},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SDFObj o;
        cases[i].damage(o);
        EXPECT_FALSE(o.repair().empty()) << "case " << i;
        EXPECT_TRUE(cases[i].sound(o)) << "case " << i;
        EXPECT_TRUE(o.repair().empty()) << "case " << i;
    }
}

} // namespace
} // namespace vel
