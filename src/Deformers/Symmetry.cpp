#include "Deformers/Symmetry.h"

#include <cmath>
#include <cstddef>

namespace vel {

namespace {

using V = Vector3<double>;
using M3 = Matrix3<double>;
using M34 = Matrix34<double>;

// A copy carried through the world transform `T`; a reflecting T flips the mirror sign and
// the frame is rebuilt so it stays right-handed.
SymmetryCopy Transformed(SymmetryCopy const& c, M34 const& T, bool reflects)
{
    SymmetryCopy r;
    r.position = c.position * T;
    r.normal = T.transformDirection(c.normal).normalize();
    V y = T.transformDirection(c.frame.row(1));
    V z = T.transformDirection(c.frame.row(2));
    r.frame = M34(reflects ? M3::Frame_yZ(y, z) : M3(T.transformDirection(c.frame.row(0)), y, z),
                  c.frame.translation() * T);
    r.mirror = reflects ? static_cast<signed char>(-c.mirror) : c.mirror;
    return r;
}

} // namespace

std::vector<SymmetryCopy> symmetry(SymmetryCopy const& brush, Matrix34<double> const& symmetryFrame, bool mirrorX,
                                   bool mirrorY, bool mirrorZ, bool rotX, bool rotY, bool rotZ, int count)
{
    // The frame's axes and origin, with scale removed: a symmetry is rigid.
    M3 const L = symmetryFrame.linear();
    V const origin = symmetryFrame.translation();
    V const axes[3] = {L.row(0).normalize(), L.row(1).normalize(), L.row(2).normalize()};
    std::vector<SymmetryCopy> copies = {brush};
    bool const mirrors[3] = {mirrorX, mirrorY, mirrorZ};
    for (int a = 0; a < 3; ++a) {
        if (!mirrors[a] || axes[a].length2() == 0)
            continue;
        M34 const T = M34::Mirror(origin, axes[a]);
        std::size_t const n = copies.size();
        for (std::size_t i = 0; i < n; ++i)
            copies.push_back(Transformed(copies[i], T, true));
    }
    bool const rotations[3] = {rotX, rotY, rotZ};
    for (int a = 0; a < 3 && count > 1; ++a) {
        if (!rotations[a] || axes[a].length2() == 0)
            continue;
        std::size_t const n = copies.size();
        for (int k = 1; k < count; ++k) {
            double const angle = 2.0 * M_PI * k / count;
            // About the axis through the frame's origin: to it, turn, and back.
            M34 T = M34::Translation(-origin);
            T *= M34(M3::RotationAroundUnitAxis(axes[a], std::sin(angle), std::cos(angle)));
            T *= M34::Translation(origin);
            for (std::size_t i = 0; i < n; ++i)
                copies.push_back(Transformed(copies[i], T, false));
        }
    }
    return copies;
}

} // namespace vel
