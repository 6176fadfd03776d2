// Clay strokes through the sculptors' entry: every action on a sphere moves the surface the
// way it should and only under the brush, short strokes change nothing, mirror and rotation
// symmetry give symmetric results, and undo gives the start back bit for bit.
#include "OpenGL/GLResourceTest.h"

#include "Deformers/BrushProperties.h"
#include "Deformers/Deformers.h"
#include "Deformers/SculptStep.h"
#include "Deformers/Sculptor.h"
#include "Scene/Command.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/SceneHistory.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <memory>

namespace vel::test {
namespace {

using Vec = Vector3<float>;

float const RADIUS = 0.4f;

// A sphere of radius 1 about the origin, symmetric under x -> -x and quarter turns about z.
std::unique_ptr<Clay> Sphere()
{
    auto mesh = Mesh::Sphere(Mesh::Box(0), 3, 0, 2.0f);
    return std::make_unique<Clay>(mesh.get());
}

std::vector<Vec> Read(Clay& clay)
{
    std::vector<Vec> texels(std::size_t(clay.sizeV().x * clay.sizeV().y));
    clay.get_positions(clay.positionRoles.current, texels.data());
    texels.resize(clay.verts.size());
    return texels;
}

bool SameBits(std::vector<Vec> const& a, std::vector<Vec> const& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Vec)) == 0;
}

// Sample i of a stroke over the sphere's top: from `start` on in steps of `step`, turning
// towards +y by `curl` i^2, the point on the sphere and its normal, the pointer 10 pixels
// further in x each time.
SBrush Sample(int i, float curl = 0.0f, Vec const& start = Vec(0.0f, 0.0f, 1.0f), Vec const& step = Vec(0.05f, 0.0f, 0.0f))
{
    SBrush s;
    s.position = (start + step * float(i) + Vec(0.0f, curl * float(i * i), 0.0f)).normalize();
    s.normal = s.position;
    s.radius = RADIUS;
    s.x = 100 + 10 * i;
    s.y = 100;
    // The paint actions lay red on every channel.
    s.material.setColor(1, 0);
    s.material.setColor(2, 0);
    s.mask = 63;
    return s;
}

// A stroke of `count` samples of `action`, one sculptor per entry of `copies` (a map of the
// first sculptor's samples onto that copy's, with its mirror sign), run as the viewport runs it.
struct Copy {
    Vec (*map)(Vec const&);
    signed char mirror;
};
Vec Same(Vec const& v)
{
    return v;
}

void Stroke(std::function<void(std::deque<Sculptor*>&)> const& sculpt, int action, int count, float curl = 0.0f,
            std::vector<Copy> const& copies = {{Same, 1}}, Vec const& start = Vec(0.0f, 0.0f, 1.0f),
            Vec const& step = Vec(0.05f, 0.0f, 0.0f))
{
    Sculptor::gSculptAction = action;
    std::deque<Sculptor*> sculptors;
    for (Copy const& c : copies) {
        SBrush first = Sample(0, curl, start, step);
        sculptors.push_back(new Sculptor(action, 3, 0, c.mirror, false, c.map(first.normal) * float(c.mirror)));
    }
    for (int i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < copies.size(); ++k) {
            SBrush s = Sample(i, curl, start, step);
            s.position = copies[k].map(s.position);
            s.normal = copies[k].map(s.normal);
            Sculptor& sc = *sculptors[k];
            sc.add(s);
            if (i == 0)
                sc._begin();
            else if (i + 1 == count)
                sc._end();
            else
                sc._progress();
        }
        sculpt(sculptors);
    }
    if (count == 1) {
        // A click: the release ends the stroke on its only sample.
        for (Sculptor* s : sculptors)
            s->_end();
        sculpt(sculptors);
    }
    for (Sculptor* s : sculptors)
        delete s;
    Sculptor::gSculptAction = 81;
}

template <typename... Rest>
void Stroke(Clay& clay, int action, int count, Rest&&... rest)
{
    Stroke([&](std::deque<Sculptor*>& s) { clay.sculpt(s); }, action, count, std::forward<Rest>(rest)...);
}

// The curl of the strokes that must turn about their start (Twist) to do anything.
float const CURL = 0.01f;

// The same stroke on the CPU: each call runs the prepared step on the mesh's positions as the
// clay's runner does (nothing at an end with fewer than 3 samples; absolute actions from the
// stroke's start).
std::vector<Vec> CpuStroke(Mesh& mesh, int action, int count, float curl)
{
    std::vector<Vec> start, positions;
    for (std::size_t v = 0; v < mesh.verts.size(); ++v)
        start.push_back(mesh.verts[v].position);
    positions = start;
    int const n = int(positions.size());
    Stroke(
        [&](std::deque<Sculptor*>& sculptors) {
            Sculptor const& first = *sculptors.front();
            if (first.End() && first.count() < 3)
                return;
            unsigned char const phase = first.Begin() ? 0 : first.End() ? 2 : 1;
            BrushProperties const& brush = *GetBrushes()[action].object;
            SculptStep const step = PrepareSculptStep(sculptors, first.count() - 1, phase, brush);
            if (step.skip)
                return;
            bool const absolute = SculptAbsoluteAction(action);
            std::vector<Vec> const& base = absolute ? start : positions;
            for (int i = 0; i < n; ++i)
                mesh.verts[std::size_t(i)].position = base[std::size_t(i)];
            std::vector<Vec> sum(positions.size());
            std::vector<float> weights(positions.size());
            ApplySculptStep(step, n, base.data(), sum.data(), weights.data(),
                            [&](int i) { return mesh.PointSculptSmooth(i); });
            for (int i = 0; i < n; ++i)
                positions[std::size_t(i)] = base[std::size_t(i)] + sum[std::size_t(i)];
        },
        action, count, curl);
    return positions;
}

class ClaySculptStepTest : public GLResourceTest {
protected:
    void SetUp() override
    {
        GLResourceTest::SetUp();
        History::instance().clear();
    }
    void TearDown() override
    {
        History::instance().clear();
        GLResourceTest::TearDown();
    }
};

// How a step should move the sphere, seen from its displacements.
enum Motion {
    OUTWARD,  // under the brush, along the normal of the stroke's start
    INWARD,
    ALONG,    // in the stroke's direction (+x)
    CONTRACT, // across the stroke (y) towards it
    EXPAND,
    SHRINK,   // towards the sphere's centre (smoothing a convex surface)
    TURN,     // about the normal: any motion under the brush
    GLOBAL,   // transforms: also far from the brush
    PAINT,    // positions untouched, materials changed
};

TEST_F(ClaySculptStepTest, EveryActionMovesTheSurfaceUnderTheBrushItsWay)
{
    struct Row {
        int action;
        Motion motion;
    };
    Row const rows[] = {
        {1, GLOBAL},     {3, GLOBAL},    {5, GLOBAL},     {9, GLOBAL},     {12, GLOBAL},  {13, GLOBAL},
        {14, GLOBAL},    {16, GLOBAL},   {17, OUTWARD},   {18, INWARD},    {19, OUTWARD}, {20, INWARD},
        {25, OUTWARD},   {26, INWARD},   {27, OUTWARD},   {28, INWARD},    {29, ALONG},   {30, ALONG},
        {32, SHRINK},    {36, EXPAND},   {37, CONTRACT},  {38, TURN},      {39, INWARD},  {41, PAINT},
        {42, PAINT},     {43, PAINT},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.action);
        History::instance().clear();
        auto clay = Sphere();
        ASSERT_TRUE(clay->buildGPUData());
        std::vector<Vec> const before = Read(*clay);
        int const samples = 6;
        float const curl = row.motion == TURN ? CURL : 0.0f;
        Stroke(*clay, row.action, samples, curl);
        std::vector<Vec> const after = Read(*clay);
        ASSERT_EQ(History::instance().commands.size(), 1u);
        if (row.motion == PAINT) {
            EXPECT_TRUE(SameBits(before, after));
            EXPECT_TRUE(clay->hasPbr()) << "painting raises the type";
            continue;
        }
        float sums[4] = {0, 0, 0, 0}; // normal, along, across, radial
        bool far = false;
        for (std::size_t v = 0; v < before.size(); ++v) {
            Vec const p = before[v], d = after[v] - before[v];
            // Distance to the stroke's path over the top, from x = 0 to x = 0.25.
            float const nearest = std::min((p - Sample(0, curl).position).length(),
                                           (p - Sample(samples - 1, curl).position).length());
            bool const outside = nearest > 1.6f * RADIUS + 0.25f;
            if (outside && row.motion != GLOBAL) {
                EXPECT_TRUE(d == Vec()) << "vertex " << v << " far from the brush moved";
            }
            far = far || (outside && d.length() > 1e-6f);
            sums[0] += d.z;
            sums[1] += d.x;
            sums[2] += p.y > 0 ? d.y : -d.y;
            sums[3] += d.dot(p.normalize());
        }
        float const tiny = 1e-5f;
        switch (row.motion) {
        case OUTWARD: EXPECT_GT(sums[0], tiny); break;
        case INWARD: EXPECT_LT(sums[0], -tiny); break;
        case ALONG: EXPECT_GT(sums[1], tiny); break;
        case CONTRACT: EXPECT_LT(sums[2], -tiny); break;
        case EXPAND: EXPECT_GT(sums[2], tiny); break;
        case SHRINK: EXPECT_LT(sums[3], -tiny); break;
        case TURN: EXPECT_FALSE(SameBits(before, after)); break;
        case GLOBAL: EXPECT_TRUE(far) << "a transform left the far side in place"; break;
        default: break;
        }
    }
}

// The first step of a stroke has no motion yet: the actions that follow the pointer's travel
// (and the ones that wait for a second sample) do nothing on a click.
TEST_F(ClaySculptStepTest, StrokesOfOneOrTwoSamplesChangeNothing)
{
    for (int action : {1, 17, 29, 32, 37}) {
        for (int samples : {1, 2}) {
            SCOPED_TRACE(testing::Message() << "action " << action << ", " << samples << " samples");
            History::instance().clear();
            auto clay = Sphere();
            ASSERT_TRUE(clay->buildGPUData());
            std::vector<Vec> const before = Read(*clay);
            Stroke(*clay, action, samples);
            EXPECT_TRUE(SameBits(before, Read(*clay)));
            EXPECT_TRUE(History::instance().commands.empty());
        }
    }
}

Vec MirrorX(Vec const& v) { return Vec(-v.x, v.y, v.z); }
Vec QuarterZ(Vec const& v) { return Vec(-v.y, v.x, v.z); }
Vec HalfZ(Vec const& v) { return Vec(-v.x, -v.y, v.z); }
Vec ThreeQuartersZ(Vec const& v) { return Vec(v.y, -v.x, v.z); }

// The vertex nearest to `p`.
std::size_t Nearest(std::vector<Vec> const& positions, Vec const& p)
{
    std::size_t best = 0;
    for (std::size_t v = 1; v < positions.size(); ++v)
        if ((positions[v] - p).length2() < (positions[best] - p).length2())
            best = v;
    return best;
}

// Symmetric sculptors give symmetric shapes, and the stroke's one undo step gives the start
// back bit for bit.
TEST_F(ClaySculptStepTest, SymmetricSculptorsGiveSymmetricShapesUndoneBitForBit)
{
    struct Case {
        char const* name;
        std::vector<Copy> copies;
        std::vector<Vec (*)(Vec const&)> maps; // each must carry the result onto itself
    };
    // The stroke runs off the mirror plane and off the axis, so the copies do not overlap.
    Case const cases[] = {
        {"mirror x", {{Same, 1}, {MirrorX, -1}}, {MirrorX}},
        {"four turns about z", {{Same, 1}, {QuarterZ, 1}, {HalfZ, 1}, {ThreeQuartersZ, 1}}, {QuarterZ, HalfZ}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        History::instance().clear();
        auto clay = Sphere();
        ASSERT_TRUE(clay->buildGPUData());
        std::vector<Vec> const before = Read(*clay);
        Stroke(*clay, 25, 6, 0.0f, c.copies, Vec(0.45f, 0.0f, 1.0f), Vec(0.0f, 0.05f, 0.0f));
        std::vector<Vec> const after = Read(*clay);
        EXPECT_FALSE(SameBits(before, after));
        for (auto map : c.maps)
            for (std::size_t v = 0; v < before.size(); ++v) {
                std::size_t const w = Nearest(before, map(before[v]));
                ASSERT_LT((before[w] - map(before[v])).length(), 1e-5f) << "the sphere is not symmetric";
                EXPECT_LT((map(after[v] - before[v]) - (after[w] - before[w])).length(), 1e-5f) << "vertex " << v;
            }
        ASSERT_EQ(History::instance().commands.size(), 1u);
        History::instance().undo();
        EXPECT_TRUE(SameBits(before, Read(*clay)));
        History::instance().redo();
        EXPECT_TRUE(SameBits(after, Read(*clay)));
    }
}

// The GPU and the CPU paths read one prepared step: the same stroke gives the same shape.
TEST_F(ClaySculptStepTest, ClayAndTheCpuDeformersAgree)
{
    for (int action : {1, 3, 5, 9, 12, 13, 14, 16, 17, 18, 19, 20, 25, 26, 27, 28, 29, 30, 32, 36, 37, 38, 39}) {
        SCOPED_TRACE(action);
        History::instance().clear();
        auto clay = Sphere();
        ASSERT_TRUE(clay->buildGPUData());
        auto mesh = Mesh::Sphere(Mesh::Box(0), 3, 0, 2.0f);
        std::vector<Vec> const start = Read(*clay);
        std::vector<Vec> const cpu = CpuStroke(*mesh, action, 6, CURL);
        Stroke(*clay, action, 6, CURL);
        std::vector<Vec> const gpu = Read(*clay);
        ASSERT_EQ(cpu.size(), gpu.size());
        float worst = 0, moved = 0;
        for (std::size_t v = 0; v < cpu.size(); ++v) {
            worst = std::max(worst, (cpu[v] - gpu[v]).length());
            moved = std::max(moved, (gpu[v] - start[v]).length());
        }
        EXPECT_LT(worst, 2e-4f);
        EXPECT_GT(moved, 1e-4f) << "the stroke did nothing: no agreement shown";
    }
}

} // namespace
} // namespace vel::test
