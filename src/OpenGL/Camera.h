// Camera: where the view looks from. The camera orbits `position` (the point it looks at) at
// `distance`; `rotation` turns world axes into view axes (row-vector convention: a world
// point p is (p - position) rotation in view space, then pushed back by `distance` along -z,
// the viewing direction).
//
// Type 0 turns freely: `rotation` is any rotation. Type 1 orbits by `yaw` about the world's
// vertical and `pitch` about the view's horizontal, with the pitch held to +-pi/2, and
// `rotation` follows from the two angles (compute_rotation).
#pragma once

#include "Math/Matrix34.h"
#include "Math/Vector3.h"

namespace vel {

class Camera {
public:
    int type = 0;
    Vector3<double> position;  // the point looked at
    Matrix3<double> rotation;  // world to view
    double distance = 1000.0;  // from the eye to `position`
    double yaw = 0.0;          // type 1 only
    double pitch = 0.0;        // type 1 only

    // With `fromRotation` the angles of type 1 are taken from the present rotation.
    void set_type(int type, bool fromRotation);
    // Type 1: the rotation of yaw, then pitch.
    void compute_rotation();
    // Type 0: the rotation times the Euler product of the three angles; type 1: yaw and
    // pitch grow by y and x (z is ignored), the pitch held to +-pi/2.
    void rotate(double x, double y, double z);
    // The rotation, scaled by the zoom of an orthographic view at this distance.
    Matrix3<double> rotation_scale() const;
    // Looks as the placement M does: its rotation and its origin, kept at this distance.
    void getFromMat34(Matrix34<double> const& M);

    // ---- navigation
    // Turns as rotate does, about `center` instead of `position`: `center` keeps its place
    // on screen.
    void rotateAbout(Vector3<double> const& center, double x, double y, double z);
    // The distance times `factor` (a factor below 1 comes closer).
    void zoom(double factor);
    // Towards `point` by `factor`: eye and target scale about it, so that it stays under
    // the same pixel in either projection.
    void zoomAbout(Vector3<double> const& point, double factor);

    // World to view: translation by -position, the rotation, then back by distance.
    Matrix34<double> modelView() const;
    // The eye in world coordinates.
    Vector3<double> eye() const;
};

} // namespace vel
