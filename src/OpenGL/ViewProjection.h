// ViewProjection: the camera's transforms at one target size, and the conversions between
// the four spaces the viewport works in.
//
// - world: the scene's coordinates.
// - view: world through `modelView`; the camera looks along -z.
// - normalized: clip space divided by w, each axis in -1..1, y up.
// - screen: pixels of the view's targets as the pointer gives them, x right, y down from
//   the top-left corner; z is the depth buffer's value, 0 at the near plane, 1 at the far.
//
// Both projections are row-vector matrices (clip = [x y z 1] P). The orthographic one
// shows the height the perspective one shows at the camera's distance, so that switching
// keeps the size of what is looked at. No GL here: the frame builds its Shader matrices
// from the same numbers.
#pragma once

#include "Math/Matrix34.h"
#include "Math/Matrix4.h"
#include "Math/Vector2.h"
#include "Math/Vector3.h"

namespace vel {

class Camera;

class ViewProjection {
public:
    int width = 1;  // of the targets, in pixels
    int height = 1;
    double fieldOfView = 45.0; // vertical, degrees
    double zNear = 10.0;
    double zFar = 10000.0;
    bool orthographic = false;
    Matrix34<double> modelView; // world to view
    Matrix4<double> projection; // view to clip
    double viewSize = 1.0; // half the height the view shows at the camera's distance
    double lens = 0.0;     // pixels per unit at unit distance, over two; 0 when orthographic

    ViewProjection() = default;
    ViewProjection(Camera const& camera, int width, int height, double fieldOfView, double zNear, double zFar,
                   bool orthographic);

    // The projection of a view of this aspect; `viewSize` and `lens` as the fields above.
    static Matrix4<double> Projection(double distance, double aspect, int height, double fieldOfView, double zNear,
                                      double zFar, bool orthographic, double& viewSize, double& lens);

    Vector3<double> point_world_to_normalized(Vector3<double> const& p) const;
    Vector3<double> point_normalized_to_world(Vector3<double> const& n) const;
    Vector3<double> point_normalized_to_screen(Vector3<double> const& n) const;
    Vector3<double> point_screen_to_normalized(Vector3<double> const& s) const;
    Vector3<double> point_world_to_screen(Vector3<double> const& p) const;
    Vector3<double> point_screen_to_world(Vector3<double> const& s) const;
    // Directions: world to view axes and back (the view's rotation only).
    Vector3<double> normal_world_to_screen(Vector3<double> const& n) const;
    Vector3<double> normal_screen_to_world(Vector3<double> const& n) const;

    // A depth buffer value to the distance in front of the eye, and back.
    double depthScreen(double z) const;
    double depthScreenInv(double distance) const;
    // World units per pixel at a distance in front of the eye.
    double pixelSize(double distance) const;
    double Near() const { return zNear; }
    double Far() const { return zFar; }
    Vector2<float> ViewSize() const { return {float(width), float(height)}; }
};

} // namespace vel
