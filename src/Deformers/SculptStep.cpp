#include "Deformers/SculptStep.h"

#include <algorithm>
#include <cmath>

#include "Deformers/BrushProperties.h"
#include "Deformers/Sculptor.h"

namespace vel {

using Vec = Vector3<float>;

int gAxes = 0;
Vector3<float> gSculptAxes(1, 0, 0);

namespace {

// Each pair is (axis, modif): the axis a deformation acts along and the one it reads.
Vec const kAxisTable[6] = {{1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 1}};
Vec const kModifTable[6] = {{0, 1, 0}, {0, 0, 1}, {0, 0, 1}, {1, 0, 0}, {1, 0, 0}, {0, 1, 0}};

constexpr float kTwoPi = 6.28318530717958647692f;

// The reference axis of a copy; its start normal turned by the mirror when it has none.
Vec ReferenceAxis(Sculptor const& s)
{
    Vec a = s.axis.normalize();
    if (a.length2() > 0.0f)
        return a;
    return (s.sample(0).normal * float(s.mirror)).normalize();
}

// Unit u orthogonal to the unit d, from d's two largest components.
Vec Orthogonal(Vec const& d)
{
    float ax = std::fabs(d.x), ay = std::fabs(d.y), az = std::fabs(d.z);
    if (ax <= ay && ax <= az)
        return Vec(0, -d.z, d.y).normalize();
    if (ay <= az)
        return Vec(-d.z, 0, d.x).normalize();
    return Vec(-d.y, d.x, 0).normalize();
}

Matrix3<float> VolumeFrame(Vec const& step)
{
    if (std::fabs(step.x) < 1e-10f && std::fabs(step.y) < 1e-10f && std::fabs(step.z) < 1e-10f)
        return Matrix3<float>();
    Vec dir = step.normalize();
    Vec u = Orthogonal(dir);
    return Matrix3<float>(u, dir.cross(u), dir);
}

// Twist's turn from sculptor 0: false when a or b vanishes once freed of the axis.
bool TwistAngle(Sculptor const& s, int index, float& cosA, float& sinA)
{
    SBrush const& F = s.sample(0);
    SBrush const& P = s.sample(std::max(index - 1, 0));
    SBrush const& C = s.sample(std::min(index, s.count() - 1));
    Vec axis = ReferenceAxis(s);
    Vec a = P.position - F.position;
    Vec b = C.position - F.position;
    a -= axis * a.dot(axis);
    b -= axis * b.dot(axis);
    float la = a.length(), lb = b.length();
    if (!(la > 0.0f) || !(lb > 0.0f) || !(F.radius > 0.0f))
        return false;
    // b scaled to |a|: its length is |a| from here on.
    Vec an = a / la, bn = b / lb;
    float angle = std::atan2(an.cross(bn).dot(axis), an.dot(bn)) * std::min(la / F.radius, 1.0f);
    // The deformer turns about F.normal * mirror: follow the drag whichever way the axis points.
    if (axis.dot(F.normal * float(s.mirror)) < 0.0f)
        angle = -angle;
    cosA = std::cos(angle);
    sinA = std::sin(angle);
    return true;
}

} // namespace

Vector3<float> SculptAxis(int which)
{
    return which >= 0 && which < 6 ? kAxisTable[which] : Vec();
}

Vector3<float> SculptModif(int which)
{
    return which >= 0 && which < 6 ? kModifTable[which] : Vec();
}

void AdvanceSculptAxes()
{
    gAxes = (gAxes + 1) % 6;
    gSculptAxes = Vec(gSculptAxes.z, gSculptAxes.x, gSculptAxes.y);
}

bool SculptPaintAction(int action)
{
    return action == 33 || (action >= 41 && action <= 49);
}

bool SculptAbsoluteAction(int action)
{
    return (action >= 1 && action <= 16 && action != 2 && action != 4 && action != 6 && action != 7 && action != 8 &&
            action != 11 && action != 15) ||
           (action >= 21 && action <= 24);
}

float RotationAngle(float amount)
{
    return amount * kTwoPi;
}

float ScaleFactor(float amount)
{
    return std::exp(amount);
}

Matrix3<float> SculptStrokeFrame(Vec direction, Vec const& normal)
{
    Vec n = normal.normalize();
    if (std::fabs(direction.normalize().dot(n)) > 0.95f || direction.length2() == 0.0f) {
        Vec a(std::fabs(n.x), std::fabs(n.y), std::fabs(n.z));
        direction = a.x <= a.y && a.x <= a.z ? Vec(1, 0, 0) : a.y <= a.z ? Vec(0, 1, 0) : Vec(0, 0, 1);
    }
    return Matrix3<float>::Frame_xZ(direction, n);
}

SculptStep PrepareSculptStep(std::deque<Sculptor*> const& sculptors, int index, unsigned char phase,
                             BrushProperties const& brush)
{
    SculptStep step;
    if (sculptors.empty() || !sculptors.front() || sculptors.front()->count() == 0) {
        step.skip = true;
        return step;
    }
    Sculptor const& first = *sculptors.front();
    int const action = first.action;
    step.action = action;
    bool const paint = SculptPaintAction(action);
    float const s = paint || phase != 0 ? brush.strength : brush.strength * 0.5f;
    step.strength = s;
    step.falloff = brush.falloff;
    step.elevation = brush.elevation;
    step.height = action == 25 || action == 26 ? 1.0f : brush.elevation;
    step.add = action == 17 || action == 19 || action == 21 || action == 23 || action == 25 || action == 27;

    // Scalars of sculptor 0.
    {
        SBrush const& F = first.sample(0);
        SBrush const& P = first.sample(std::max(index - 1, 0));
        SBrush const& C = first.sample(std::min(index, first.count() - 1));
        float const moved = (C.position - P.position).length();
        bool const nearStart = action == 38 || action == 42 || action == 43 || action == 45 ||
                               action == 46 || action == 48 || action == 49 || (action >= 1 && action <= 16) ||
                               (action >= 21 && action <= 24);
        step.radius = nearStart ? F.radius : P.radius;
        step.amount = float(P.x - F.x) * 0.001f;
        float const pressed = P.radius > 0.0f ? C.pressure * moved / P.radius : 0.0f;
        switch (action) {
        case 17: case 18: case 19: case 20:
            step.skip = index <= 0;
            break;
        case 30:
            step.weight = moved;
            break;
        case 32: case 33:
            step.intensity = std::min(4.0f * s * pressed, 0.5f);
            break;
        case 36:
            step.intensity = -s * pressed;
            break;
        case 37:
            step.intensity = s * pressed;
            break;
        case 38:
            step.skip = !TwistAngle(first, index, step.cosA, step.sinA);
            break;
        case 41: case 44: case 47:
            step.strength = s * C.pressure;
            break;
        case 12: case 13: case 14: case 16:
            step.axis = SculptAxis(gAxes);
            step.modif = SculptModif(gAxes);
            step.swirlAxis = step.axis.length2() > 0.0f ? step.axis.maxAxis() : 2;
            break;
        default:
            break;
        }
    }

    float const angle = RotationAngle(step.amount);
    for (Sculptor const* sculptor : sculptors) {
        Sculptor const& sc = *sculptor;
        if (sc.count() == 0)
            continue;
        SBrush const& F = sc.sample(0);
        SBrush const& P = sc.sample(std::max(index - 1, 0));
        SBrush const& C = sc.sample(std::min(index, sc.count() - 1));
        float const mirror = float(sc.mirror);
        step.flips.push_back(sc.mirror < 0);
        Vec center, second, third, axisOut, modifOut;
        Matrix3<float> frame;
        float factor = 0.0f;
        switch (action) {
        case 1: case 3: case 5: case 9: case 10: case 12: case 13: case 14: case 16:
            center = F.position;
            second = P.position;
            break;
        case 21: case 22:
            center = F.position;
            second = C.position - F.position;
            third = F.normal;
            break;
        case 23: case 24:
            center = (F.position + C.position) * 0.5f;
            second = (C.position - F.position) * 0.5f;
            third = F.normal;
            break;
        case 17: case 18: case 19: case 20: case 25: case 26: case 27: case 28: case 29:
            center = P.position;
            second = C.position - P.position;
            third = P.normal;
            break;
        case 30:
            center = P.position;
            second = C.position - P.position;
            frame = VolumeFrame(second);
            break;
        case 38:
            center = F.position;
            second = F.normal * mirror;
            break;
        case 39:
            center = F.position;
            third = F.normal;
            break;
        case 42: case 45: case 48:
            center = F.position;
            second = P.position - F.position;
            break;
        case 43: case 46: case 49:
            center = F.position;
            break;
        default: // 32, 33, 36, 37, 41, 44, 47
            center = P.position;
            break;
        }
        switch (action) {
        case 1:
            axisOut = P.position - F.position;
            break;
        case 3:
            frame = Matrix3<float>::RotationAroundUnitAxis(ReferenceAxis(sc), std::sin(angle), std::cos(angle));
            break;
        case 5:
            factor = ScaleFactor(step.amount);
            break;
        case 9: case 10:
            axisOut = ReferenceAxis(sc);
            factor = ScaleFactor(step.amount);
            break;
        case 12:
            axisOut = F.radius > 0.0f ? step.axis * ((P.position - F.position).dot(step.axis) / F.radius) : Vec();
            modifOut = step.modif;
            break;
        case 13:
            // A still bend (no turn) must still give zero, not the cancellation of a huge radius.
            if (std::fabs(angle) > 1e-4f && F.radius > 0.0f) {
                axisOut = step.axis;
                modifOut = step.modif;
                factor = F.radius / angle;
            } else {
                factor = F.radius > 0.0f ? F.radius : 1.0f;
            }
            break;
        case 14:
            axisOut = F.radius > 0.0f ? step.axis * (angle / F.radius) : Vec();
            modifOut = step.modif;
            break;
        case 16:
            factor = F.radius > 0.0f ? angle * mirror / F.radius : 0.0f;
            break;
        case 17: case 18: case 19: case 20: case 21: case 22: case 23: case 24:
            frame = SculptStrokeFrame(second, third);
            if (sc.mirror < 0 && action >= 21)
                frame = Matrix3<float>(frame.row(0), frame.row(1) * -1.0f, frame.row(2));
            break;
        case 42: case 45: case 48: {
            float l2 = second.length2();
            axisOut = l2 > 0.0f ? second / l2 : Vec();
            break;
        }
        default:
            break;
        }
        step.centers.push_back(center);
        step.seconds.push_back(second);
        step.thirds.push_back(third);
        step.frames.push_back(frame);
        step.factors.push_back(factor);
        step.axes.push_back(axisOut);
        step.modifs.push_back(modifOut);
    }
    return step;
}

} // namespace vel
