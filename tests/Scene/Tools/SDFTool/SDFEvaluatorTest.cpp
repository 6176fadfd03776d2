// The CPU evaluator against distances worked out independently: closed forms where they
// are short, and brute force over the shape's centre curve where they are not.
#include "Scene/Tools/SDFTool/SDFEvaluator.h"
#include "Scene/Tools/SDFTool/SDFTool.h"
#include "Scene/SceneTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

namespace vel::test {
namespace {

using V = Vector3<double>;
double const PI = 3.14159265358979323846;

Matrix3<double> Turn(V axis, double angle)
{
    return Matrix3<double>::RotationAroundUnitAxis(axis, std::sin(angle), std::cos(angle));
}

double BoxExact(V p, V h)
{
    V q(std::abs(p.x) - h.x, std::abs(p.y) - h.y, std::abs(p.z) - h.z);
    V o(std::max(q.x, 0.0), std::max(q.y, 0.0), std::max(q.z, 0.0));
    return o.length() + std::min(std::max(q.x, std::max(q.y, q.z)), 0.0);
}

// Distance to a curve sampled densely, minus a radius.
double CurveDistance(V p, std::function<V(double)> const& curve, double radius)
{
    double best = 1e9;
    for (int i = 0; i <= 20000; ++i)
        best = std::min(best, (p - curve(i / 20000.0)).length());
    return best - radius;
}

SDFEvaluator Single(SDFObj const& o, Matrix34<double> const& world = Matrix34<double>())
{
    SDFEvaluator e;
    e.build({o}, {world});
    return e;
}

SDFObj Shape(int shape, Vector3<float> dims, float R = 0)
{
    SDFObj o;
    o.shape = uint8_t(shape);
    o.dims = dims;
    o.R = R;
    return o;
}

std::vector<V> Points(unsigned seed, int count, double reach)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-reach, reach);
    std::vector<V> out;
    for (int i = 0; i < count; ++i)
        out.emplace_back(u(rng), u(rng), u(rng));
    return out;
}

TEST(SDFEvaluatorTest, EachPrimitiveMatchesItsDistance)
{
    struct Case {
        char const* name;
        SDFObj obj;
        std::function<double(V)> exact;
        bool outsideOnly; // brute force over spheres is exact outside only
    };
    Case const cases[] = {
        {"sphere", Shape(SDF_SPHERE, {1.6f, 9, 9}), [](V p) { return p.length() - 0.8; }, false},
        {"box", Shape(SDF_BOX, {2, 1, 3}), [](V p) { return BoxExact(p, V(1, 0.5, 1.5)); }, false},
        {"rounded box", Shape(SDF_BOX, {2, 1, 3}, 0.2f),
         [](V p) { return BoxExact(p, V(0.8, 0.3, 1.3)) - 0.2; }, false},
        {"cylinder", Shape(SDF_CYLINDER, {2, 1, 0}),
         [](V p) {
             double dx = std::hypot(p.x, p.y) - 1, dz = std::abs(p.z) - 0.5;
             return std::min(std::max(dx, dz), 0.0) + std::hypot(std::max(dx, 0.0), std::max(dz, 0.0));
         },
         false},
        {"torus", Shape(SDF_TORUS, {2, 0.6f, 360}),
         [](V p) { return CurveDistance(p, [](double t) { return V(std::cos(2 * PI * t), std::sin(2 * PI * t), 0); }, 0.3); },
         false},
        {"capped torus", Shape(SDF_TORUS, {2, 0.6f, 90}),
         [](V p) {
             return CurveDistance(p, [](double t) { double a = (t - 0.5) * PI / 2; return V(std::sin(a), std::cos(a), 0); }, 0.3);
         },
         false},
        {"chainlink", Shape(SDF_CHAINLINK, {2, 0.6f, 1}),
         [](V p) {
             // Two half circles around x = +-0.5 joined by straight parts.
             return CurveDistance(p,
                                  [](double t) {
                                      double s = t * (2 * PI + 2);
                                      if (s < PI)
                                          return V(0.5 + std::sin(s), std::cos(s), 0);
                                      if (s < PI + 1)
                                          return V(0.5 - (s - PI), -1, 0);
                                      if (s < 2 * PI + 1)
                                          return V(-0.5 - std::sin(s - PI - 1), -std::cos(s - PI - 1), 0);
                                      return V(-0.5 + (s - 2 * PI - 1), 1, 0);
                                  },
                                  0.3);
         },
         false},
        {"capsule", Shape(SDF_CAPSULE, {1, 3, 0}),
         [](V p) { return CurveDistance(p, [](double t) { return V(-1.5 + 3 * t, 0, 0); }, 0.5); }, false},
        {"bicapsule", Shape(SDF_BICAPSULE, {0.6f, 1.2f, 3}),
         [](V p) {
             // The hull of spheres from radius 0.3 at x = -1.5 to 0.6 at x = 1.5.
             double best = 1e9;
             for (int i = 0; i <= 20000; ++i) {
                 double t = i / 20000.0;
                 best = std::min(best, (p - V(-1.5 + 3 * t, 0, 0)).length() - (0.3 + 0.3 * t));
             }
             return best;
         },
         true},
    };
    for (Case const& c : cases) {
        SDFEvaluator e = Single(c.obj);
        for (V p : Points(7, 60, 2.5)) {
            double exact = c.exact(p);
            if (c.outsideOnly && exact < 0.05)
                continue;
            EXPECT_NEAR(e.distance(Vector3<float>(p)), exact, 2e-3) << c.name << " at " << p.x << " " << p.y << " " << p.z;
        }
    }
    // The ellipsoid's distance is a bound, exact along its axes.
    SDFEvaluator e = Single(Shape(SDF_ELLIPSOID, {2, 1, 4}));
    for (double t : {-3.0, -0.5, 0.2, 1.5})
        EXPECT_NEAR(e.distance({float(t), 0, 0}), std::abs(t) - 1, 1e-5);
    EXPECT_NEAR(e.distance({0, 0, 2.5f}), 0.5, 1e-5);
    EXPECT_LT(e.distance({0, 0.2f, 0.3f}), 0);
}

// Two tools in a tree, listed, placed with rotation and scale: the list's union,
// subtraction and intersection against the closed forms in the world.
TEST_F(TreeTest, SDFEvaluatorCombinesTwoListedTools)
{
    Matrix34<double> aPlace(Turn(V(0, 0, 1), 0.3), V(0.2, -0.1, 0.4));
    Matrix34<double> bPlace(Turn(V(0, 1, 0), 0.7) * Matrix3<double>::Scale(1.5),
                            V(0.9, 0.2, 0.1));
    for (int op : {SDF_ADD, SDF_SUB, SDF_INT}) {
        SDFObj sphere = Shape(SDF_SPHERE, {2, 2, 2});
        auto* a = new SDFTool(sphere, aPlace);
        root->addChild(a);
        SDFObj box = Shape(SDF_BOX, {1, 0.6f, 1.4f});
        box.operation = uint8_t(op);
        box.priority = 1;
        auto* b = new SDFTool(box, bPlace);
        a->addChild(b);
        std::vector<Tool*> all;
        root->toList(all);
        SDFEvaluator e;
        e.build(a->sdfs);
        Matrix34<double> aInv = inv(aPlace);
        for (V w : Points(11, 80, 2.5)) {
            double da = (w * aInv).length() - 1;
            // b's world is its placement, then a's: distances in its frame scale by 1.5.
            double db = BoxExact(w * inv(bPlace * aPlace), V(0.5, 0.3, 0.7)) * 1.5;
            double expected = op == SDF_ADD ? std::min(da, db) : op == SDF_SUB ? std::max(da, -db) : std::max(da, db);
            EXPECT_NEAR(e.distanceWorld(w), expected, 1e-4) << "operation " << op;
        }
        a->remove();
    }
}

TEST(SDFEvaluatorTest, BracketsGroupTheExpression)
{
    // A add B sub C, against A add (B sub C): spheres on the x axis.
    std::vector<SDFObj> objs(3, Shape(SDF_SPHERE, {2, 2, 2}));
    objs[1].operation = SDF_ADD;
    objs[2].operation = SDF_SUB;
    std::vector<Matrix34<double>> worlds{Matrix34<double>::Translation(V(-1, 0, 0)), Matrix34<double>::Translation(V(1, 0, 0)),
                                         Matrix34<double>::Translation(V(-0.5, 0, 0))};
    auto sphere = [](V p, double x) { return (p - V(x, 0, 0)).length() - 1; };
    for (bool grouped : {false, true}) {
        objs[1].bracket = grouped ? 1 : 0;
        objs[2].bracket = grouped ? -1 : 0;
        SDFEvaluator e;
        e.build(objs, worlds);
        for (V w : Points(3, 50, 2.5)) {
            double a = sphere(w, -1), b = sphere(w, 1), c = sphere(w, -0.5);
            double expected = grouped ? std::min(a, std::max(b, -c)) : std::max(std::min(a, b), -c);
            EXPECT_NEAR(e.distanceWorld(w), expected, 1e-5) << "grouped " << grouped;
        }
    }
}

TEST(SDFEvaluatorTest, ShellsClipsArraysPaintAndBlends)
{
    auto sphere = [](V p) { return p.length() - 1; };
    struct Case {
        char const* name;
        std::function<void(SDFObj&)> set;
        std::function<double(V)> exact;
    };
    Case const cases[] = {
        {"symmetric shell", [](SDFObj& o) { o.shell = SDF_SHELL_SYMMETRIC; o.thickness = 0.2f; },
         [&](V p) { return std::abs(sphere(p)) - 0.1; }},
        {"outer shell", [](SDFObj& o) { o.shell = SDF_SHELL_OUTER; o.thickness = 0.2f; },
         [&](V p) { return std::abs(sphere(p) - 0.1) - 0.1; }},
        {"inner shell", [](SDFObj& o) { o.shell = SDF_SHELL_INNER; o.thickness = 0.2f; },
         [&](V p) { return std::abs(sphere(p) + 0.1) - 0.1; }},
        {"half by clip", [](SDFObj& o) { o.clip0.x = 0; },
         [&](V p) { return std::max(sphere(p), BoxExact(p - V(0.5, 0, 0), V(0.5, 1, 1))); }},
        {"row of three", [](SDFObj& o) { o.nx = 3; o.step.x = 3; },
         [&](V p) { return std::min({sphere(p), sphere(p - V(3, 0, 0)), sphere(p + V(3, 0, 0))}); }},
        {"two around z", [](SDFObj& o) { o.arrayType = SDF_ARRAY_Z; o.count = 2; o.arrayAngle = float(PI); o.arrayRadius = 2; },
         [&](V p) { return std::min(sphere(p - V(2, 0, 0)), sphere(p + V(2, 0, 0))); }},
    };
    for (Case const& c : cases) {
        SDFObj o = Shape(SDF_SPHERE, {2, 2, 2});
        c.set(o);
        SDFEvaluator e = Single(o);
        for (V p : Points(5, 60, 3.5))
            EXPECT_NEAR(e.distance(Vector3<float>(p)), c.exact(p), 1e-4) << c.name;
    }

    // Paint leaves the distance; blends round the sharp operation only near its seam.
    std::vector<SDFObj> objs(2, Shape(SDF_SPHERE, {2, 2, 2}));
    std::vector<Matrix34<double>> worlds{Matrix34<double>(), Matrix34<double>::Translation(V(1.2, 0, 0))};
    auto distances = [&](int op, int blend) {
        objs[1].operation = uint8_t(op);
        objs[1].blend = uint8_t(blend);
        objs[1].falloff = 0.5f;
        SDFEvaluator e;
        e.build(objs, worlds);
        std::vector<double> out;
        for (V p : Points(9, 60, 2.5))
            out.push_back(e.distance(Vector3<float>(p)));
        return out;
    };
    std::vector<V> points = Points(9, 60, 2.5);
    auto painted = distances(SDF_PAINT, 0);
    for (size_t i = 0; i < points.size(); ++i)
        EXPECT_NEAR(painted[i], sphere(points[i]), 1e-5);
    for (int op : {SDF_ADD, SDF_SUB, SDF_INT})
        for (int blend : {SDF_BLEND_FILLET, SDF_BLEND_CHAMFER}) {
            auto sharp = distances(op, SDF_BLEND_SHARP), soft = distances(op, blend);
            for (size_t i = 0; i < points.size(); ++i) {
                double gap = op == SDF_ADD ? sharp[i] - soft[i] : soft[i] - sharp[i];
                EXPECT_GE(gap, -1e-6) << "a blend only adds material to a union, takes it elsewhere";
                EXPECT_LE(gap, 0.5 / 2 + 1e-6);
            }
        }
}

// A joint turns the seam of two spheres into a pipe; under intersection the pipe is all.
TEST(SDFEvaluatorTest, JointsMakePipesAlongTheSeam)
{
    std::vector<SDFObj> objs(2, Shape(SDF_SPHERE, {2, 2, 2}));
    objs[1].operation = SDF_INT;
    objs[1].joint0 = 0.1f;
    objs[1].joint1 = 0.05f;
    std::vector<Matrix34<double>> worlds{Matrix34<double>(), Matrix34<double>::Translation(V(1, 0, 0))};
    V seam(0.5, std::sqrt(0.75), 0); // on both spheres
    V away(0.5, std::sqrt(0.75) + 0.3, 0);
    struct Case {
        int joint;
        double onSeam;
    };
    for (Case c : {Case{SDF_JOINT_ROUND, -0.1}, Case{SDF_JOINT_QUAD, -0.05}, Case{SDF_JOINT_RHOMB, -0.1}}) {
        objs[1].joint = uint8_t(c.joint);
        SDFEvaluator e;
        e.build(objs, worlds);
        EXPECT_NEAR(e.distance(Vector3<float>(seam)), c.onSeam, 1e-5) << "joint " << c.joint;
        EXPECT_GT(e.distance(Vector3<float>(away)), 0.05) << "joint " << c.joint;
        EXPECT_GT(e.distance({0, 0, 0}), 0) << "the pipe, not the lens, under intersection";
    }
}

// Every point inside the tree lies inside its box, for random sharp trees with groups.
TEST(SDFEvaluatorTest, BoundsHoldEveryInsidePoint)
{
    std::mt19937 rng(4);
    auto u = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
    for (int tree = 0; tree < 20; ++tree) {
        int n = 2 + tree % 5;
        std::vector<SDFObj> objs;
        std::vector<Matrix34<double>> worlds;
        int open = 0;
        for (int i = 0; i < n; ++i) {
            SDFObj o = Shape(int(u(0, 7.99)), {float(u(0.5, 2)), float(u(0.3, 1)), float(u(0.5, 2))});
            if (o.shape == SDF_TORUS)
                o.dims.z = float(u(30, 360));
            // Inflate and soft blends reach past the boxes by design; the shader pads for them.
            int const ops[] = {SDF_ADD, SDF_SUB, SDF_INT, SDF_DEFLATE};
            o.operation = uint8_t(ops[int(u(0, 3.99))]);
            o.falloff = float(u(0, 0.5));
            if (i > 0 && i < n - 1 && u(0, 1) < 0.3) {
                o.bracket = 1;
                ++open;
            } else if (open > 0 && u(0, 1) < 0.5) {
                o.bracket = -1;
                --open;
            }
            objs.push_back(o);
            worlds.emplace_back(Turn(V(0, 0, 1), u(0, 3)), V(u(-1, 1), u(-1, 1), u(-1, 1)));
        }
        SDFEvaluator e;
        e.build(objs, worlds);
        for (V p : Points(unsigned(tree), 3000, 4)) {
            if (e.distance(Vector3<float>(p)) < -1e-4) {
                ASSERT_FALSE(e.bounds.empty()) << "tree " << tree;
                EXPECT_TRUE(e.bounds.contains(p)) << "tree " << tree;
            }
        }
    }
}

} // namespace
} // namespace vel::test
