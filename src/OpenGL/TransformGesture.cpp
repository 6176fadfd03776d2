#include "OpenGL/TransformGesture.h"

#include "Scene/Commands/CommandTransformObjects.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace vel {

std::vector<Tool*> TransformGesture::Targets(std::vector<Tool*> const& given)
{
    std::unordered_set<Tool*> all;
    for (Tool* t : given)
        if (t && !t->isRoot())
            all.insert(t);
    std::unordered_set<Tool*> kept;
    std::vector<Tool*> out;
    for (Tool* t : given) {
        if (!t || t->isRoot() || !kept.insert(t).second)
            continue;
        bool below = false;
        for (Tool* p = t->Parent; p && !below; p = p->Parent)
            below = all.count(p) > 0;
        if (!below)
            out.push_back(t);
    }
    return out;
}

bool TransformGesture::begin(std::vector<Tool*> const& tools, Vector3<double> const& c)
{
    targets = Targets(tools);
    starts.clear();
    frames.clear();
    for (Tool* t : targets) {
        starts.push_back(t->objectMatrix);
        frames.push_back(t->parentPivot());
    }
    center = c;
    applied = Matrix34<double>();
    return active();
}

void TransformGesture::apply(Matrix34<double> const& X)
{
    applied = X;
    bool const move = X.linear() == Matrix3<double>::Identity();
    for (size_t i = 0; i < targets.size(); ++i) {
        Matrix34<double> D = frames[i] * X * inv(frames[i]);
        // A move keeps to the tool's translation axis, as its constrained moves do.
        if (move)
            D = Matrix34<double>::Translation(targets[i]->constrainTranslation(D.translation()));
        targets[i]->objectMatrix = starts[i] * D;
        targets[i]->setChanged(true);
    }
}

bool TransformGesture::moved() const
{
    for (size_t i = 0; i < targets.size(); ++i)
        if (targets[i]->objectMatrix != starts[i])
            return true;
    return false;
}

void TransformGesture::finish()
{
    if (moved()) {
        // The command takes what it is built with as the other state: build it with the
        // press placement, then put the new one back.
        std::vector<Matrix34<double>> now;
        for (size_t i = 0; i < targets.size(); ++i) {
            now.push_back(targets[i]->objectMatrix);
            targets[i]->objectMatrix = starts[i];
        }
        auto* command = new CommandTransformObjects(targets);
        for (size_t i = 0; i < targets.size(); ++i)
            targets[i]->objectMatrix = now[i];
        History::instance().push(command);
    }
    targets.clear();
    starts.clear();
    frames.clear();
}

void TransformGesture::cancel()
{
    for (size_t i = 0; i < targets.size(); ++i) {
        targets[i]->objectMatrix = starts[i];
        targets[i]->setChanged(true);
    }
    targets.clear();
    starts.clear();
    frames.clear();
}

Matrix34<double> TransformGesture::Move(Vector3<double> const& shift)
{
    return Matrix34<double>::Translation(shift);
}

Matrix34<double> TransformGesture::RotateAbout(Vector3<double> const& c, Vector3<double> const& axis, double angle)
{
    double const n = axis.length();
    if (n == 0.0)
        return Matrix34<double>();
    return Matrix34<double>::Translation(-c) *
           Matrix34<double>(Matrix3<double>::RotationAroundUnitAxis(axis * (1.0 / n), std::sin(angle), std::cos(angle))) *
           Matrix34<double>::Translation(c);
}

Matrix34<double> TransformGesture::ScaleAbout(Vector3<double> const& c, double factor)
{
    return Matrix34<double>::Translation(-c) * Matrix34<double>::Scale(factor) * Matrix34<double>::Translation(c);
}

Matrix34<double> TransformGesture::MirrorAbout(Vector3<double> const& c, Vector3<double> const& normal)
{
    return Matrix34<double>::Mirror(c, normal);
}

} // namespace vel
