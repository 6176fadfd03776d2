// OBJ exchange beyond one mesh: writing several placed meshes to one file, and the importing
// caller's policy. The per-mesh reader and writer are Mesh::loadOBJ, Mesh::loadSeparateOBJ and
// Mesh::appendOBJ (MeshFile.cpp).
#pragma once

#include "Math/AABB.h"
#include "Math/Matrix34.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vel {

class Mesh;

// A mesh and its world matrix, as the scene hands them to the OBJ writer.
using PlacedMesh = std::pair<Mesh const*, Matrix34<double>>;

// Writes "# Vellumbra OBJ export", the global counts and one object per entry; ".obj" is
// added when the path lacks it. False when the file cannot be opened.
bool saveOBJ(std::vector<PlacedMesh> const& meshes, std::string const& path, bool normals);

// What the scene imports from an OBJ file: every mesh of the file, except those whose
// reconstruction found a non-manifold edge, which are refused with "Cannot import
// non-manifold mesh." in the log. `box` grows by every vertex read.
std::vector<std::unique_ptr<Mesh>> importOBJ(std::string const& path, AABB& box);

} // namespace vel
