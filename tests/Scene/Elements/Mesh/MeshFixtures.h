// Named fixture meshes shared by the mesh tests, and the checks every test runs after an
// operation: the validator's list must be empty.
#pragma once

#include "Scene/Elements/Mesh/Mesh.h"

#include <gtest/gtest.h>

#include <QMetaObject>
#include <QString>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vel::test {

// A mesh from points and faces (index lists), not yet initialised.
std::unique_ptr<Mesh> MakeMesh(std::vector<Vector3<float>> const& points, std::vector<std::vector<int>> const& faces);
// The same, initialised with style 0.
std::unique_ptr<Mesh> BuildMesh(std::vector<Vector3<float>> const& points, std::vector<std::vector<int>> const& faces);

std::unique_ptr<Mesh> ClosedCube();          // 8 vertices, 6 quads, closed, no sharp edges
std::unique_ptr<Mesh> ClosedOctahedron();    // 6 vertices, 8 triangles, closed
std::unique_ptr<Mesh> QuadGrid(int n);       // n x n quads in the unit square, open
std::unique_ptr<Mesh> OpenWithHoles();       // 5 x 5 grid missing two inner quads apart
std::unique_ptr<Mesh> FlippedFaces();        // octahedron with two faces listed reversed
std::unique_ptr<Mesh> NonManifoldEdge();     // three triangles on one edge
std::unique_ptr<Mesh> NonManifoldVertex();   // two closed pyramids touching at their apex
std::unique_ptr<Mesh> FlatPair();            // unit square of two triangles on the diagonal 0-2

// The half-edge between a and b, whichever way it runs; -1 when there is none.
int EdgeBetween(Mesh const& mesh, int a, int b);

// Renders the validator's list for a failure message; empty when the mesh is valid.
std::string Violations(Mesh const& mesh);

// The signed volume enclosed by the faces (positive when they face outward).
double SignedVolume(Mesh const& mesh);

// Counts the corners whose half-edge is sharp, each pair once.
int SharpEdgeCount(Mesh const& mesh);

// Counts the border half-edges (those without a twin).
int BorderCount(Mesh const& mesh);

// The first difference between two meshes' records (compared bytewise: they are packed words
// without padding), triangle counts and corner data, or "" when there is none.
std::string RecordDifference(Mesh const& a, Mesh const& b);

// Collects what reaches the log while alive.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    std::vector<std::pair<QString, int>> entries;
    QString all() const;

private:
    QMetaObject::Connection connection;
};

} // namespace vel::test

// After every operation: the mesh satisfies every half-edge invariant.
#define EXPECT_MESH_VALID(mesh) EXPECT_EQ(::vel::test::Violations(mesh), "")
#define ASSERT_MESH_VALID(mesh) ASSERT_EQ(::vel::test::Violations(mesh), "")
