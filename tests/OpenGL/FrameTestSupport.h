// Helpers of the frame pipeline tests: a painter that writes known surfaces into a G-buffer
// (so that composites can be checked without meshes), pixel access to targets, and the
// reference images that the tests make and keep under tests/OpenGL/reference.
//
// A reference is compared within a tolerance; a missing one fails. Running the tests with
// VELLUMBRA_UPDATE_REFERENCES=1 writes every reference anew instead: only on purpose, after
// a change of the picture that was looked at.
#pragma once

#include "GLResourceTest.h"

#include "Math/Vector2.h"
#include "Math/Vector3.h"
#include "Math/Vector4.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vel {
class GLLayer;
class GLView;
class Texture2D;
} // namespace vel

namespace vel::test {

// One surface written into every target of a layer over a rectangle.
struct Patch {
    Vector4<float> rect;                  // x0, y0, x1, y1 in normalised device coordinates
    float depth = 0.0f;                   // NDC depth
    bool sphere = false;                  // a hemisphere towards the viewer (a disc), else flat
    Vector3<float> normal{0, 0, 1};       // the flat surface's view normal
    int id = 1;                           // object id
    int flags = 0;                        // render flags; FLAG_NON_EMPTY is added
    Vector4<float> color{1, 1, 1, 1};     // albedo, alpha
    Vector4<float> light{0, 0, 0, 0};     // glow colour, thickness
    Vector2<float> roughMetal{0.5f, 0.0f};
};

// Draws the patch into `layer` (all six targets, depth tested); normals are written at 0.7
// of unit length, so that a composite that does not normalise shows it.
void Paint(GLLayer& layer, Patch const& patch);

// A lit square in the plane y = 0, `half` on each side of the origin, facing up, drawn with
// the frame's transforms (Shader::ProjectionModelViewMatrix, Shader::NormalMatrix).
void PaintFloor(GLLayer& layer, float half);
// A lit parallelogram likewise: the corner `origin`, the edges `u` and `v`, facing `normal`
// (world coordinates), with object id `id`.
void PaintQuad(GLLayer& layer, Vector3<float> const& origin, Vector3<float> const& u, Vector3<float> const& v,
               Vector3<float> const& normal, int id = 1);

// The pixel of a world point under Shader::ProjectionModelViewMatrix, in a picture of
// width x height; asserts that it lies inside.
std::pair<int, int> PixelOf(Vector3<double> const& p, int width, int height);

// RGBA floats of a texture, bottom row first.
std::vector<float> Pixels(Texture2D* texture);
// The RGBA of pixel (x, y) of `pixels` in a picture `width` wide.
Vector4<float> At(std::vector<float> const& pixels, int width, int x, int y);

// Compares the picture with the reference `name` (a PNG of 8-bit channels): fails when more
// than 1 % of the pixels differ by more than 6/255 in a channel, or when the reference is
// missing. With VELLUMBRA_UPDATE_REFERENCES set it writes the reference instead.
void ExpectMatchesReference(std::vector<float> const& pixels, int width, int height, std::string const& name);

// The colour CompositIDs gives an object id (its hash, mirrored).
Vector3<float> IdColor(int id);

// A small viewport (W x H) in the colour style (6) over an empty scene; the style comes back
// after the test.
class ViewFrameTest : public GLResourceTest {
protected:
    static constexpr int W = 64;
    static constexpr int H = 48;
    void SetUp() override;
    void TearDown() override;
    // One frame of the viewport; its picture.
    std::vector<float> Frame();
    std::unique_ptr<GLView> view;
    int style = 0;
};

} // namespace vel::test
