#include "OpenGL/AssembleActions.h"

#include "Scene/Commands/ToolSwapCommands.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <algorithm>

namespace vel {
namespace AssembleActions {

namespace {

// One swap command over the targets, built before `change` runs on each of them.
template <class SwapCommand, class Change>
bool Record(std::vector<Tool*> const& targets, Change const& change)
{
    if (targets.empty())
        return false;
    auto* command = new SwapCommand(targets);
    for (Tool* t : command->targets) {
        change(t);
        t->setChanged(true);
    }
    History::instance().push(command);
    return true;
}

} // namespace

bool ApplyMaterial(std::vector<Tool*> const& targets, Material const& source, int mask)
{
    return Record<CommandMaterialObjects>(targets, [&](Tool* t) { t->changeMaterial(source, mask, false, false); });
}

bool ConstrainRotation(std::vector<Tool*> const& targets, Vector3<float> const& axis)
{
    return Record<CommandConstrainRotationObjects>(targets, [&](Tool* t) { t->rotationAxis = axis; });
}

bool ConstrainTranslation(std::vector<Tool*> const& targets, Vector3<float> const& axis)
{
    return Record<CommandConstrainTranslationObjects>(targets, [&](Tool* t) { t->translationAxis = axis; });
}

bool SetSpeed(std::vector<Tool*> const& targets, float speed)
{
    return Record<CommandSpeedObjects>(targets, [&](Tool* t) { t->changeSpeed(speed, false, false); });
}

bool SetDelay(std::vector<Tool*> const& targets, float delay)
{
    return Record<CommandDelayObjects>(targets, [&](Tool* t) { t->changeDelay(delay, false, false); });
}

bool FlipNormals(std::vector<Tool*> const& targets)
{
    if (targets.empty())
        return false;
    auto* command = new CommandFlipNormalsObjects(targets);
    command->swap(); // the toggle is the change itself
    History::instance().push(command);
    return true;
}

bool SetParent(std::vector<Tool*> const& targets, Tool* parent)
{
    if (!parent || targets.empty())
        return false;
    for (Tool* t : targets)
        for (Tool* p = parent; p; p = p->Parent)
            if (p == t)
                return false;
    History& history = History::instance();
    history.superBegin("Set Parent", false);
    for (Tool* t : targets) {
        if (t->Parent == parent)
            continue;
        // W = A B P stays: the new pivot is the old world frame of the pivot over the
        // new parent's world frame.
        Matrix34<double> parentWorld;
        parent->worldTransform(parentWorld, true);
        Matrix34<double> const newPivot = t->parentPivot() * inv(parentWorld);
        t->subFromParent();
        t->addToParent(parent, newPivot);
        t->setChanged(true);
    }
    history.superEnd();
    return true;
}

bool Delete(Tool* target, bool hierarchy)
{
    if (!target || !target->Parent)
        return false;
    History& history = History::instance();
    history.superBegin("Object Delete", false);
    if (!hierarchy) {
        std::vector<Tool*> const children = target->children;
        SetParent(children, target->Parent);
    }
    target->remove();
    history.superEnd();
    return true;
}

bool Link(Tool* a, Tool* b)
{
    if (!a || !b || a == b || a->linked(b))
        return false;
    a->link(b);
    return true;
}

bool Unlink(std::vector<Tool*> const& targets)
{
    if (std::none_of(targets.begin(), targets.end(), [](Tool* t) { return t->linked(); }))
        return false;
    History& history = History::instance();
    history.superBegin("Unlink", false);
    for (Tool* t : targets)
        if (t->linked())
            t->unlink(false);
    history.superEnd();
    return true;
}

} // namespace AssembleActions
} // namespace vel
