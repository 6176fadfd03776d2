// Factories: every shape is valid, built without repairs, closed where it should be, wound
// outward and unit-sized.
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Elements/Mesh/MeshGeometry.h"

#include "MeshFixtures.h"

#include <gtest/gtest.h>

#include <functional>

namespace vel {
namespace {

struct Shape {
    char const* name;
    std::unique_ptr<Mesh> (*make)();
    std::size_t verts, faces;
    int sharpEdges; // -1: not checked
};

TEST(MeshFactories, ClosedSolidsAreValidOutwardAndUnitSized)
{
    test::LogCapture log;
    std::vector<Shape> shapes = {
        {"Tetrahedron", &Mesh::Tetrahedron, 4, 4, 6},
        {"Box", [] { return Mesh::Box(1); }, 8, 6, 12},
        {"CubeHandle", &Mesh::CubeHandle, 8, 6, 0},
        {"Octahedron", &Mesh::Octahedron, 6, 8, 12},
        {"Icosahedron", &Mesh::Icosahedron, 12, 20, 30},
        {"Dodecahedron", &Mesh::Dodecahedron, 20, 12, 30},
        {"Cylinder", [] { return Mesh::Cylinder(16); }, 32, 18, 32},
        {"Cone", [] { return Mesh::Cone(16); }, 17, 17, 16},
        {"Capsule", [] { return Mesh::Capsule(12, 4); }, 2 + 12 * 8, 12 * 9, 0},
        {"Gear", [] { return Mesh::Gear(8, 0.2f, 0.4f, 0.5f, 0.1f, 0); }, 16 * 6, 16 * 3 + 8 * 5 + 8, -1},
        {"Sphere", [] { return Mesh::Sphere(Mesh::CubeHandle(), 3); }, 386, 384, 0},
        {"Icosphere", [] { return Mesh::Sphere(Mesh::Icosahedron(), 2, 0, 1, 1); }, 162, 320, 0},
        {"Helix", [] { return Mesh::Helix(6, 8, 1.5f, 0.1f); }, 6 * 13, 6 * 12 + 2, 12},
        {"Test", &Mesh::Test, 9, 9, 12},
        {"HalfCube", &Mesh::HalfCube, 6, 5, 9},
        {"BiCapsule", [] { return Mesh::BiCapsule(8, 3, 0.3f, 0.1f); }, 2 + 8 * 6, 8 * 7, -1},
    };
    for (auto const& s : shapes) {
        SCOPED_TRACE(s.name);
        auto m = s.make();
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(m->repairs, 0u);
        EXPECT_EQ(m->verts.size(), s.verts);
        EXPECT_EQ(m->faces.size(), s.faces);
        EXPECT_EQ(test::BorderCount(*m), 0);
        EXPECT_EQ(m->components, 1);
        EXPECT_GT(test::SignedVolume(*m), 0.0) << "wound outward";
        if (s.sharpEdges >= 0) {
            EXPECT_EQ(test::SharpEdgeCount(*m), s.sharpEdges);
        }
        m->calculateAABB(Matrix34<double>());
        EXPECT_LE(m->aabb.max.x, 0.5 + 1e-6);
        EXPECT_GE(m->aabb.min.z, -0.5 - 1e-6);
    }
    EXPECT_TRUE(log.entries.empty()) << log.all().toStdString();
}

TEST(MeshFactories, SphereLiesOnItsSphere)
{
    auto m = Mesh::Sphere(Mesh::CubeHandle(), 2, 1, 2.0f);
    EXPECT_TRUE(m->hasPbr());
    EXPECT_EQ(m->materials.size(), m->edges.size());
    for (std::size_t v = 0; v < m->verts.size(); ++v)
        EXPECT_NEAR(m->verts[v].position.length(), 1.0f, 1e-5f);
}

TEST(MeshFactories, GearRaisesTeethAndBevelWidensTheTop)
{
    auto g = Mesh::Gear(1, 0.2f, 0.4f, 0.5f, 0.1f, 0);
    EXPECT_MESH_VALID(*g);
    EXPECT_EQ(g->verts.size(), 4u * 6u); // two teeth
    auto straight = Mesh::Gear(6, 0.2f, 0.4f, 0.5f, 0.1f, 0);
    auto beveled = Mesh::Gear(6, 0.2f, 0.4f, 0.5f, 0.1f, 20);
    EXPECT_MESH_VALID(*beveled);
    // Vertex 2 is the first tip on top, 5 on the bottom.
    Vector3<float> top = straight->verts[2].position, bottom = straight->verts[5].position;
    EXPECT_FLOAT_EQ(top.x * top.x + top.y * top.y, bottom.x * bottom.x + bottom.y * bottom.y);
    top = beveled->verts[2].position;
    bottom = beveled->verts[5].position;
    EXPECT_GT(top.x * top.x + top.y * top.y, bottom.x * bottom.x + bottom.y * bottom.y);
}

TEST(MeshFactories, OpenShapesAndOutlines)
{
    // An L-shaped outline, tilted out of every axis plane.
    std::deque<Vector3<double>> outline;
    Matrix3<double> tilt(Vector3<double>(0.8, 0.6, 0), Vector3<double>(-0.36, 0.48, 0.8), Vector3<double>(0.48, -0.64, 0.6));
    for (auto [x, y] : {std::pair{0., 0.}, {2., 0.}, {2., 1.}, {1., 1.}, {1., 2.}, {0., 2.}})
        outline.push_back(Vector3<double>(x, y, 0) * Matrix34<double>(tilt));
    struct Case {
        char const* name;
        std::function<std::unique_ptr<Mesh>()> make;
        std::size_t faces;
        int borders; // border half-edges
        Vector3<double> facing; // the summed face normal's direction
    } cases[] = {
        {"Trihedral", &Mesh::Trihedral, 3, 6, {-1, -1, -1}},
        {"triangle", [] { return Mesh::NGon(3); }, 1, 3, {0, 0, 1}},
        {"octagon", [] { return Mesh::NGon(8); }, 1, 8, {0, 0, 1}},
        {"Quad", &Mesh::Quad, 1, 4, {0, 0, 1}},
        {"Heightmap", [] { return Mesh::Heightmap(std::vector<float>(12, 0.25f), 4, 3); }, 6, 10, {0, 0, 1}},
        {"polygon", [&] { return Mesh::FromPolygonTriangulation(outline, false, false, false); }, 4, 6, tilt.row(2)},
        {"polygon flipped", [&] { return Mesh::FromPolygonTriangulation(outline, false, true, true); }, 4, 6, tilt.row(2) * -1.0},
        {"polygon refined", [&] { return Mesh::FromPolygonTriangulation(outline, true, false, false); }, 0, 0, tilt.row(2)},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        auto m = c.make();
        EXPECT_MESH_VALID(*m);
        EXPECT_EQ(m->repairs, 0u);
        EXPECT_EQ(m->components, 1);
        if (c.faces > 0) {
            EXPECT_EQ(m->faces.size(), c.faces);
            EXPECT_EQ(test::BorderCount(*m), c.borders);
        } else {
            EXPECT_GT(m->faces.size(), 4u);
        }
        Vector3<double> n;
        for (std::size_t f = 0; f < m->faces.size(); ++f)
            n += m->calculatePreciseFaceNormal(int(f));
        EXPECT_NEAR(n.normalize().dot(c.facing.normalize()), 1.0, 1e-9);
    }
    EXPECT_EQ(Mesh::Quad()->verts[2].position, Vector3<float>(0.5f, 0.5f, 0));
    test::LogCapture log;
    EXPECT_TRUE(Mesh::Heightmap({1, 2, 3}, 2, 2)->empty());
    EXPECT_TRUE(Mesh::FromPolygonTriangulation({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, true, false, false)->empty());
    EXPECT_EQ(log.entries.size(), 2u) << log.all().toStdString();
}

TEST(MeshGeometryHelpers, NewellNormalIsTwiceTheArea)
{
    Vector3<double> square[4] = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
    Vector3<double> n = NormalFromPolygon(square, 4);
    EXPECT_DOUBLE_EQ(n.z, 8);
    EXPECT_DOUBLE_EQ(n.x, 0);
}

} // namespace
} // namespace vel
