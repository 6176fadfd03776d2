#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Curve/UCurve.h"
#include "Scene/Commands/CommandCurveDataType.h"
#include "Scene/Commands/CommandSaveCurve.h"
#include "Scene/Commands/CommandSubdivideCurve.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"

#include "../Mesh/MeshFixtures.h"
#include "../../SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

namespace vel::test {
namespace {

constexpr double PI = 3.14159265358979323846;

// Every byte of the records undo must restore.
std::string Bits(Curve const& c)
{
    std::string s;
    auto add = [&s](void const* p, size_t n) { s.append(static_cast<char const*>(p), n); };
    add(c.verts.data(), c.verts.size() * sizeof(CurveVert));
    add(c.edges.data(), c.edges.size() * sizeof(CurveEdge));
    add(c.vertFrames.data(), c.vertFrames.size() * sizeof(CurveFrame));
    add(c.materials.data(), c.materials.size() * sizeof(Pbr));
    add(c.uvs.data(), c.uvs.size() * sizeof(uint32_t));
    add(&c.dataType, sizeof c.dataType);
    add(&c.hasFrames, sizeof c.hasFrames);
    return s;
}

// The chain invariant: the next edge starts where this one ends, and links are mutual.
void ExpectChainsLinked(Curve const& c)
{
    for (size_t i = 0; i < c.edges.size(); ++i) {
        CurveEdge const& e = c.edges[i];
        if (e.e[1] >= 0) {
            EXPECT_EQ(c.edges[size_t(e.e[1])].v[0], e.v[1]) << "edge " << i;
            EXPECT_EQ(c.edges[size_t(e.e[1])].e[0], int(i)) << "edge " << i;
        }
    }
}

void ExpectOrthonormal(Matrix34<double> const& F, double tolerance)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(F.row(i).length(), 1.0, tolerance);
        EXPECT_NEAR(F.row(i).dot(F.row((i + 1) % 3)), 0.0, tolerance);
    }
    EXPECT_NEAR(F.determinant(), 1.0, 3 * tolerance);
}

Vector3<double> EdgeNormal(Curve const& c, int e)
{
    return Vector3<double>(Vector3<float>(c.edgeFrames[size_t(e)].normal));
}

TEST(CurveFrames, HelixFramesTurnAgainstTheFrenetFrameByTheTorsionOnly)
{
    // Finely cut: a projected transport turns by the torsion up to a bias that shrinks with
    // the bend per segment.
    std::unique_ptr<Curve> helix(Curve::Helix(256, 3));
    helix->calculateFrames(true);
    // Radius a, rise c per radian: torsion c / (a^2 + c^2). A frame that does not spin
    // about the curve turns against the Frenet frame at minus the torsion.
    double a = 0.5, c = 1.0 / (3 * 2 * PI);
    double torsion = c / (a * a + c * c);
    double previous = 0, total = 0;
    for (size_t e = 0; e < helix->edges.size(); ++e) {
        Vector3<float> p0, p1;
        helix->segmentPoints(int(e), p0, p1);
        Vector3<double> mid((p0 + p1) * 0.5f), T(Vector3<float>(p1 - p0).normalize());
        Vector3<double> N = Vector3<double>(-mid.x, -mid.y, 0).normalize();
        N = (N - T * N.dot(T)).normalize();
        Vector3<double> B = T.cross(N), n = EdgeNormal(*helix, int(e));
        EXPECT_NEAR(n.dot(T), 0.0, 2e-3);
        double angle = std::atan2(n.dot(B), n.dot(N));
        if (e > 0)
            total += std::remainder(angle - previous, 2 * PI);
        previous = angle;
    }
    double expected = -torsion * helix->Length() * (helix->edges.size() - 1) / helix->edges.size();
    EXPECT_NEAR(total, expected, 0.03 * std::fabs(expected));
}

TEST(CurveFrames, KnotFramesAreOrthonormalAndEachStepOnlyTilts)
{
    std::unique_ptr<Curve> knot(Curve::TrefoilKnot(200));
    knot->calculateFrames(true);
    for (size_t v = 0; v < knot->verts.size(); ++v)
        ExpectOrthonormal(knot->vertFrame(int(v), false), 2e-3);
    // From one edge to the next the normal only loses its part along the new tangent.
    int start = knot->edgeStart(0);
    for (int e = start, steps = 0; steps + 1 < int(knot->edges.size()); ++steps) {
        int next = knot->edges[size_t(e)].e[1];
        Vector3<double> t(Vector3<float>(knot->edgeFrames[size_t(next)].tangent));
        Vector3<double> n = EdgeNormal(*knot, e);
        Vector3<double> moved = (n - t * n.dot(t)).normalize();
        EXPECT_NEAR(moved.dot(EdgeNormal(*knot, next)), 1.0, 1e-3) << "edge " << next;
        e = next;
    }
}

TEST(CurveFrames, DegenerateAxesGiveFiniteBonesOrNone)
{
    struct Case {
        char const* name;
        std::vector<Vector3<float>> points;
        bool closed;
        bool bones;
    } const cases[] = {
        {"no vertices", {}, false, false},
        {"one vertex", {{1, 2, 3}}, false, false},
        {"zero-length segments", {{0, 0, 0}, {0, 0, 0}, {0, 0, 1}, {0, 0, 1}}, false, true},
        {"drawn back over itself", {{0, 0, 0}, {1, 0, 0}, {0, 0, 0}, {1, 0, 0}}, false, true},
        {"all points equal", {{2, 2, 2}, {2, 2, 2}, {2, 2, 2}}, true, true},
    };
    for (Case const& k : cases) {
        SCOPED_TRACE(k.name);
        Curve c(k.points, k.closed, false, 0);
        ASSERT_EQ(c.buildVertsFrames(), k.bones);
        EXPECT_EQ(c.bones.size(), k.bones ? k.points.size() : 0u);
        for (CurveBone const& b : c.bones)
            for (float f : b)
                EXPECT_TRUE(std::isfinite(f));
        for (size_t v = 0; v < c.bones.size(); ++v)
            ExpectOrthonormal(c.vertFrame(int(v), false), 2e-3);
    }
}

TEST(CurveFrames, FreeEndsFaceAlongTheChainAtBothEnds)
{
    std::unique_ptr<Curve> open(Curve::Segment(4, 0));
    ASSERT_EQ(open->bords.size(), 2u);
    EXPECT_EQ(open->bords[0].vertex, 1);
    EXPECT_EQ(open->bords[1].vertex, -5);
    EXPECT_NEAR(open->bords[0].frame.row(2).z, 1.0, 1e-3);
    std::unique_ptr<Curve> ring(Curve::NGon(6, false));
    EXPECT_TRUE(ring->bords.empty());
}

// ---- orientation, subdivision, smoothing ---------------------------------------------------

TEST(CurveEdits, OrientationTurnsEdgesLinkedTheWrongWayAndWalksAChainOnce)
{
    Curve c;
    for (int i = 0; i < 5; ++i)
        c.vertAdd({float(i), 0, 0}, false);
    c.edgeAdd(0, 1, -1, -1, false, false);
    c.edgeAdd(2, 1, -1, -1, false, true);
    c.edgeAdd(2, 3, -1, -1, false, false);
    c.edgeAdd(4, 3, -1, -1, false, false);
    c.initialize(0);
    ExpectChainsLinked(c);
    EXPECT_EQ(c.edges[1].v[0], 1);
    EXPECT_TRUE(c.edges[1].is(CurveEdge::START_SHARP)) << "the end flags are exchanged";
    for (CurveEdge const& e : c.edges)
        EXPECT_FALSE(e.is(CurveEdge::VISITED));
    EXPECT_EQ(c.bords.size(), 2u);
}

TEST(CurveEdits, SubdivisionDoublesEdgesKeepsSharpPointsAndOpenEnds)
{
    struct Case {
        char const* name;
        Curve* curve;
        int openEnds;
    } const cases[] = {
        {"closed smooth", Curve::NGon(5, false), 0},
        {"closed sharp", Curve::Quad(1, 2), 0},
        {"open", Curve::Segment(3, 0), 2},
    };
    for (Case const& k : cases) {
        SCOPED_TRACE(k.name);
        std::unique_ptr<Curve> c(k.curve);
        size_t n = c->edges.size();
        std::vector<CurveVert> before = c->verts;
        c->subdivide(true);
        EXPECT_EQ(c->edges.size(), 2 * n);
        ExpectChainsLinked(*c);
        int ends = 0;
        for (CurveEdge const& e : c->edges)
            ends += (e.e[0] < 0) + (e.e[1] < 0);
        EXPECT_EQ(ends, k.openEnds);
        for (size_t v = 0; v < before.size(); ++v) {
            if (before[v].is(CurveVert::SHARP) || c->findNeighbours(int(v)).size() < 2) {
                EXPECT_EQ(c->verts[v].position, before[v].position) << "vertex " << v;
            }
        }
    }
    std::unique_ptr<Curve> ring(Curve::NGon(5, false));
    Vector3<float> p = ring->verts[0].position;
    ring->subdivide(true);
    EXPECT_NE(ring->verts[0].position, p) << "smooth points move";
}

TEST(CurveEdits, SmoothDrawKeepsOpenEndsAndMovesEveryPointOfARing)
{
    std::vector<Vector3<float>> zigzag;
    for (int i = 0; i < 8; ++i)
        zigzag.push_back({float(i), float(i % 2), 0});
    for (bool closed : {false, true}) {
        Curve c(zigzag, closed, false, 0);
        c.smoothDraw(3);
        for (size_t v = 0; v < zigzag.size(); ++v) {
            bool end = !closed && (v == 0 || v + 1 == zigzag.size());
            EXPECT_EQ(c.verts[v].position == zigzag[v], end) << "vertex " << v << " closed " << closed;
        }
    }
}

TEST(CurveEdits, UniformSamplesLieAtTheSpacingAlongLinesAndCircles)
{
    std::unique_ptr<Curve> line(Curve::Segment(3, 0));
    std::unique_ptr<Curve> circle(Curve::NGon(64, false));
    for (Curve* c : {line.get(), circle.get()}) {
        float spacing = 0.1f;
        std::deque<float> params;
        std::vector<Vector3<float>> s = c->Uniform(spacing, params, false, false, 0);
        ASSERT_GT(s.size(), 5u);
        EXPECT_EQ(params.size(), s.size());
        for (size_t i = 1; i < s.size(); ++i)
            EXPECT_NEAR((s[i] - s[i - 1]).length(), 0.1f, 1e-4f) << "sample " << i;
    }
    float spacing = 0.1f;
    std::deque<float> params;
    EXPECT_EQ(line->Uniform(spacing, params, true, false, 0).size(), 11u) << "the end joins";
    Curve none;
    EXPECT_TRUE(none.Uniform(spacing, params, true, false, 0).empty());
    EXPECT_TRUE(params.empty());
}

TEST(CurveEdits, AUniformCurveFollowsItsBaseAndEmptiesWithIt)
{
    Shared<Element> base(Curve::NGon(32, false));
    UCurve u(base, 0.05f);
    EXPECT_GT(u.verts.size(), 20u);
    EXPECT_EQ(u.activeEdges(), int(u.verts.size())) << "a closed base gives a closed curve";
    static_cast<Curve*>(base.get())->clear();
    u.update();
    EXPECT_TRUE(u.verts.empty());
}

// ---- file record ---------------------------------------------------------------------------

std::string Write(Curve& c)
{
    OFile out;
    std::unordered_map<Element*, int> ids;
    c.DataWrite(out, ids);
    return out.bytes();
}

bool Read(Curve& c, std::string const& bytes)
{
    std::string body = bytes.size() >= 8 ? bytes.substr(8) : std::string();
    IFile in(QByteArray(body.data(), int(body.size())));
    return c.DataRead(in, FILE_VERSION_CURRENT);
}

TEST(CurveFile, RecordsComeBackBitForBitForEveryDataType)
{
    for (int type : {0, 1, 2}) {
        std::unique_ptr<Curve> c(Curve::Helix(8, 2));
        c->setFrames(true);
        c->vertFrames[3].radius = hfloat(0.25f);
        c->setDataType(type);
        if (type == 1)
            c->materials[5].setColor(1, 1234);
        if (type == 2)
            c->uvs[2] = 0xdeadbeef;
        std::string bytes = Write(*c);
        EXPECT_EQ(int(bytes.size()), c->DataSize());
        Curve back;
        ASSERT_TRUE(Read(back, bytes));
        EXPECT_EQ(Bits(back), Bits(*c)) << "type " << type;
        EXPECT_EQ(Write(back), bytes);
    }
}

TEST(CurveFile, DamagedRecordsEndInALogLineAndAnEmptyCurve)
{
    std::unique_ptr<Curve> c(Curve::Segment(2, 0));
    std::string good = Write(*c);
    auto patched = [&good](size_t at, int value) {
        std::string s = good;
        std::memcpy(&s[at], &value, sizeof value);
        return s;
    };
    size_t vertexCount = 8 + 18, edgeCount = vertexCount + 4 + 3 * 13;
    float nan = std::nanf("");
    int nanBits;
    std::memcpy(&nanBits, &nan, sizeof nanBits);
    std::string const cases[] = {
        good.substr(0, good.size() - 3),        // cut short
        patched(vertexCount, 1 << 30),          // more vertices than bytes
        patched(edgeCount, -1),                 // negative edge count
        patched(edgeCount + 4, 7),              // an edge to a vertex that does not exist
        patched(vertexCount + 4, nanBits),      // a position that is not a number
    };
    for (std::string const& bytes : cases) {
        LogCapture log;
        Curve back;
        EXPECT_FALSE(Read(back, bytes));
        EXPECT_TRUE(back.verts.empty() && back.edges.empty());
        EXPECT_TRUE(log.all().contains("Cannot read curve"));
        EXPECT_FALSE(back.buildVertsFrames());
    }
}

// ---- commands ------------------------------------------------------------------------------

class CurveCommandsTest : public SceneTest {
protected:
    Shared<Element> shape;
    Curve* curve = nullptr;

    void SetUp() override
    {
        SceneTest::SetUp();
        curve = Curve::NGon(7, false);
        curve->setFrames(true);
        shape = Shared<Element>(curve);
    }
    void TearDown() override
    {
        shape.release();
        SceneTest::TearDown();
    }
};

// Each command is made before its change and pushed after it; undo and redo, twice, give each
// state back bit for bit.
TEST_F(CurveCommandsTest, EveryCurveCommandUndoesAndRedoesBitForBit)
{
    struct Case {
        Command* (*command)(Shared<Element> const&);
        void (*change)(Curve&);
    } const cases[] = {
        {[](Shared<Element> const& e) -> Command* { return new CommandSaveCurve(e); }, [](Curve& c) { c.smoothDraw(2); }},
        {[](Shared<Element> const& e) -> Command* { return new CommandSubdivideCurve(e, true); },
         [](Curve& c) { c.subdivide(true); }},
        {[](Shared<Element> const& e) -> Command* { return new CommandCurveDataType(e); },
         [](Curve& c) { c.setDataType(1); }},
    };
    for (Case const& k : cases) {
        std::string before = Bits(*curve);
        Command* command = k.command(shape);
        k.change(*curve);
        history().push(command);
        std::string after = Bits(*curve);
        ASSERT_NE(before, after);
        for (int round = 0; round < 2; ++round) {
            history().undo();
            EXPECT_EQ(Bits(*curve), before) << "after undo " << round;
            history().redo();
            EXPECT_EQ(Bits(*curve), after) << "after redo " << round;
        }
    }
}

} // namespace
} // namespace vel::test
