// The hint primitives drawn over the picture: circles, points, segments and the ground grid.
// Each binds its built-in shader, sets its uniforms with Shader::ProjectionModelViewMatrix
// and draws without vertex buffers (the one vertex array of the process stays bound).
#pragma once

#include "Math/Vector3.h"
#include "Math/Vector4.h"

namespace vel {

// A circle of `segments` segments about `center` in the plane of the unit vectors `axisX`
// and `axisY`; "Curve/DrawCircle".
void GLCircle(Vector3<double> const& center, Vector3<double> const& axisX, Vector3<double> const& axisY,
              double radius, int segments, Vector4<float> const& color);
// A square of `size` pixels about `position`, in a target of width x height; "Point".
void GLPoint(Vector3<double> const& position, float size, int width, int height, Vector4<float> const& color);
// One line; "Segment".
void GLSegment(Vector3<double> const& p0, Vector3<double> const& p1, Vector4<float> const& color);
// The ground grid in the plane y = 0: 2 `half` + 1 lines each way, `step` apart, fading out
// towards the edge; the lines through the origin are the x axis (red) and the z axis (blue).
void GLGrid(double step, int half, bool axes);

} // namespace vel
