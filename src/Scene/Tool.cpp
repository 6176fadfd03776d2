#include "Scene/Tool.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Deformers/Sculptor.h"
#include "OpenGL/Shader.h"
#include "Scene/Commands/CommandObjectAddChild.h"
#include "Scene/Commands/CommandObjectDelete.h"
#include "Scene/Commands/CommandObjectLink.h"
#include "Scene/Commands/CommandObjectRemItem.h"
#include "Scene/Commands/CommandObjectSetPivot.h"
#include "Scene/Commands/CommandObjectSubChild.h"
#include "Scene/Commands/CommandObjectUnlink.h"
#include "Scene/Commands/CommandRegisterToolCreation.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/RenderFlags.h"
#include "Scene/SceneHistory.h"
#include "Scene/ToolList.h"

#include <cmath>

namespace vel {

Tool* gPreviouslyAddedObject = nullptr;
void (*gResetStickySelection)(Tool*) = nullptr;

int Tool::GlobalID = 0;
int Tool::COUNT = 0;
double Tool::GlobalTime = 0;
bool Tool::Error = false;
bool Tool::ShowHandles = true;

// This tool first; then, with `links`, every other ring member that is an object.
template <class Operation>
void Tool::forRing(bool links, bool sameParent, Operation const& operation)
{
    operation(this);
    if (!links)
        return;
    int steps = 0;
    for (Tool* m = ringNext(this, steps); m != this; m = ringNext(m, steps))
        if (m->isObject() && (!sameParent || m->Parent == Parent))
            operation(m);
}

namespace {

// Ids of the live tools, each with its abandoned mark. Ids are never reused, so a stale
// pointer cannot pass for a live tool.
std::unordered_map<int, bool>& liveIds()
{
    static std::unordered_map<int, bool> ids;
    return ids;
}

// A placement that cannot be undone: inv would give the identity instead of an inverse.
bool refused(Matrix34<double> const& M)
{
    if (M.invertible())
        return false;
    LogInfo("A singular or non-finite transformation was ignored", 1);
    return true;
}

} // namespace

bool Tool::Alive(int id)
{
    return liveIds().count(id) != 0;
}

void Tool::Abandon(int id)
{
    auto found = liveIds().find(id);
    if (found != liveIds().end())
        found->second = true;
}

bool Tool::Abandoned(int id)
{
    auto found = liveIds().find(id);
    return found != liveIds().end() && found->second;
}

// Not recorded while recording is off: the command would be destroyed at once, and with it
// the tool it would own.
void g_REGISTER_TOOL_CREATION(Tool* tool)
{
    History& history = History::instance();
    if (!history.recording())
        return;
    history.superBegin("Register Tool Creation", false);
    history.push(new CommandRegisterToolCreation(tool));
    history.superEnd();
    history.collapse();
}

// ---- construction and destruction ------------------------------------------------------

Tool::Tool(Unrecorded)
    : id(GlobalID++)
{
    ++COUNT;
    liveIds().emplace(id, false);
}

Tool::Tool(Shared<Element> const& element, Matrix34<double> const& object, Matrix34<double> const& pivot,
           Material const& material)
    : id(GlobalID++)
    , element(element)
    , objectMatrix(object)
    , pivotMatrix(pivot)
    , material(material)
{
    ++COUNT;
    liveIds().emplace(id, false);
    g_REGISTER_TOOL_CREATION(this);
}

// Nothing of the teardown is a step of the history: the children go with their commands
// destroyed at once, which destroys them.
Tool::~Tool()
{
    History::Pause pause;
    if (gResetStickySelection)
        gResetStickySelection(this);
    unlink(false);
    clearChildren();
    subFromParent();
    --COUNT;
    liveIds().erase(id);
}

int Tool::ToolType() const
{
    return 0;
}

Element* Tool::RenderElement() const
{
    return element.get();
}

Tool* Tool::cloneTool2(bool)
{
    return nullptr;
}

// ---- parents and children --------------------------------------------------------------

// One step, so that no undo can stop half-way with the tool out of the tree and its
// deletion taken back.
void Tool::remove()
{
    History& history = History::instance();
    history.superBegin("Object Delete", false);
    if (gResetStickySelection)
        gResetStickySelection(this);
    unlink(false);
    subFromParent();
    while (!children.empty())
        children.back()->remove();
    // Last: with recording off this destroys the tool.
    history.push(new CommandObjectDelete(this));
    history.superEnd();
}

void Tool::clearChildren()
{
    while (!children.empty()) {
        Tool* child = children.back();
        VEL_ASSERT_MSG(child->Parent == this, "a child lists another parent");
        child->remove();
    }
}

void Tool::setChild(int position, Tool* T)
{
    VEL_ASSERT(T);
    VEL_ASSERT(position >= 0 && position < int(children.size()));
    children[position] = T;
    T->Parent = this;
}

void Tool::addChild(Tool* T)
{
    VEL_ASSERT(T);
    T->addToParent(this);
}

void Tool::addToParent(Tool* P)
{
    VEL_ASSERT(P);
    VEL_ASSERT_MSG(!Parent, "a tool leaves its parent before it joins another");
    VEL_ASSERT_MSG(!P->hasAncestor(this), "a tool cannot become its own ancestor");
    auto* command = new CommandObjectAddChild(P, this, int(P->children.size()));
    Parent = P;
    setObject(P->isObject());
    P->children.push_back(this);
    History::instance().push(command);
}

void Tool::addToParent(Tool* P, Matrix34<double> const& pivot)
{
    auto* command = new CommandObjectSetPivot(this, pivot);
    command->swap();
    History::instance().push(command);
    addToParent(P);
}

void Tool::subChild(Tool* T)
{
    VEL_ASSERT(T);
    VEL_ASSERT(T->Parent == this);
    T->subFromParent();
}

bool Tool::isChild(Tool* T) const
{
    return T && T->Parent == this && childPosition(T) >= 0;
}

Tool* Tool::subFromParent()
{
    if (!Parent)
        return nullptr;
    Tool* former = Parent;
    Command* command;
    if (Parent->hasItem(this)) {
        VEL_ASSERT(Parent->hasItem());
        command = new CommandObjectRemItem(Parent, this);
        Parent->setItemSlot(nullptr);
        Parent = nullptr;
    } else {
        int position = Parent->childPosition(this);
        VEL_ASSERT_MSG(position >= 0, "a tool is missing from its parent's children");
        command = new CommandObjectSubChild(Parent, this, position);
        Parent->children.erase(Parent->children.begin() + position);
        Parent = nullptr;
        if (gPreviouslyAddedObject == this)
            gPreviouslyAddedObject = nullptr;
    }
    History::instance().push(command);
    return former;
}

int Tool::childPosition(Tool* T) const
{
    // From the back: teardown and undo take children from the end.
    for (int i = int(children.size()) - 1; i >= 0; --i)
        if (children[i] == T)
            return i;
    return -1;
}

bool Tool::hasAncestor(Tool const* T) const
{
    for (Tool const* t = this; t; t = t->Parent)
        if (t == T)
            return true;
    return false;
}

Tool* Tool::itemSlot() const
{
    return nullptr;
}

void Tool::setItemSlot(Tool*)
{
    VEL_ASSERT_MSG(false, "this kind has no item slot");
}

// ---- links -----------------------------------------------------------------------------

Tool* Tool::ringNext(Tool const* t, int& steps)
{
    VEL_ASSERT_MSG(++steps <= COUNT, "the ring of links does not close");
    return t->linkNext;
}

Tool* Tool::previous()
{
    int steps = 0;
    Tool* t = this;
    while (t->linkNext != this)
        t = ringNext(t, steps);
    return t;
}

bool Tool::linked() const
{
    return linkNext != this;
}

bool Tool::linked(Tool* T) const
{
    int steps = 0;
    Tool const* t = this;
    do {
        if (t == T)
            return true;
        t = ringNext(t, steps);
    } while (t != this);
    return false;
}

void Tool::link(Tool* T)
{
    VEL_ASSERT(T);
    if (linked(T))
        return;
    std::swap(linkNext, T->linkNext);
    History::instance().push(new CommandObjectLink(this, T));
}

void Tool::unlink(bool recursive)
{
    if (linked()) {
        Tool* before = previous();
        auto* command = new CommandObjectUnlink(this, before);
        before->linkNext = linkNext;
        linkNext = this;
        History::instance().push(command);
    }
    if (recursive)
        for (Tool* child : children)
            child->unlink(true);
}

int Tool::linksCount() const
{
    int count = 0;
    Tool const* t = this;
    do {
        t = ringNext(t, count);
    } while (t != this);
    return count;
}

void Tool::findLinks(std::vector<Tool*>& tools, std::vector<Tool*>& previous)
{
    tools.push_back(this);
    previous.push_back(this->previous());
    for (Tool* child : children)
        child->findLinks(tools, previous);
}

void Tool::findAllLinked(std::vector<Tool*>& out, bool all)
{
    if (!all) {
        out.push_back(this);
        return;
    }
    int steps = 0;
    Tool* t = this;
    do {
        if (t->flags & FLAG_SELECTED)
            out.push_back(t);
        t = ringNext(t, steps);
    } while (t != this);
}

void Tool::findAllLinks(std::vector<Tool*>& out)
{
    int steps = 0;
    Tool* t = this;
    do {
        out.push_back(t);
        t = ringNext(t, steps);
    } while (t != this);
}

std::vector<Tool*> Tool::findAllObjectLinks()
{
    std::vector<Tool*> out;
    int steps = 0;
    Tool* t = this;
    do {
        if (t->isObject())
            out.push_back(t);
        t = ringNext(t, steps);
    } while (t != this);
    return out;
}

// ---- cloning ---------------------------------------------------------------------------
// Two passes: Mark(true) flags the subtree and forgets old copies; the copies are made in
// order, each remembered in its original's `clone`, so that a tool reached a second time
// reuses its copy; Mark(false) clears the flags again.

Tool* Tool::cloneTool(bool withPivot)
{
    Mark(true);
    bool wasObject = isObject();
    setObject(true);
    Tool* copy = SimpleClone(true, objectMatrix, withPivot ? pivotMatrix : Matrix34<double>());
    finishClone(copy);
    Mark(false);
    setObject(wasObject);
    return copy;
}

Tool* Tool::cloneObject(Matrix34<double> const& C, Matrix34<double> const& D)
{
    Mark(true);
    bool wasObject = isObject();
    setObject(true);
    Tool* copy = SimpleClone(true, objectMatrix * pivotMatrix * C, D);
    finishClone(copy);
    Mark(false);
    setObject(wasObject);
    return copy;
}

Tool* Tool::InternalClone()
{
    return finishClone(SimpleClone(isObject(), objectMatrix, pivotMatrix));
}

Tool* Tool::finishClone(Tool* copy)
{
    for (size_t i = 0; i < children.size(); ++i) {
        Tool* child = children[i];
        if (!child->clonable())
            continue;
        Tool* childCopy = child->clone ? child->clone : child->InternalClone();
        copy->addChild(childCopy);
    }
    return copy;
}

Tool* Tool::SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    Tool* copy = new Tool(element, object, pivot, material);
    CloneInfo(asObject, copy, true);
    return copy;
}

void Tool::CloneInfo(bool asObject, Tool* copy, bool withLinks)
{
    static_cast<ObjectShader&>(*copy) = *this;
    copy->flags = (copy->flags & ~CLONE_FLAGS) | (flags & CLONE_FLAGS);
    copy->rotationAxis = rotationAxis;
    copy->translationAxis = translationAxis;
    copy->rotationMultiplier = rotationMultiplier;
    copy->speed = speed;
    copy->delay = delay;
    copy->record = record;
    clone = copy;
    if (withLinks)
        link(copy);
    if (asObject)
        copy->flags |= FLAG_OBJECT;
}

void Tool::Mark(bool on)
{
    flags = on ? (flags | FLAG_CLONABLE) : (flags & ~FLAG_CLONABLE);
    clone = nullptr;
    for (Tool* child : children)
        child->Mark(on);
}

bool Tool::clonable() const
{
    return flags & FLAG_CLONABLE;
}

// ---- listing and searching -------------------------------------------------------------

void Tool::toList(std::vector<Tool*>& list)
{
    listIndex = int(list.size());
    list.push_back(this);
    for (Tool* child : children)
        child->toList(list);
}

void Tool::toList(ToolList& list, Matrix34<double> const& parentWorld, int parentEntry, int index,
                  bool skipSelected)
{
    Matrix34<double> world = transform() * parentWorld;
    int i = list.add(this, world, parentEntry, index);
    for (Tool* child : children)
        list.walk(child, skipSelected, world, i, index);
}

void Tool::toMap(std::unordered_map<int, Tool*>& map)
{
    map[id] = this;
    for (Tool* child : children)
        child->toMap(map);
}

void Tool::toElements(std::set<Element*>& out)
{
    if (element)
        out.insert(element.get());
    for (Tool* child : children)
        child->toElements(out);
}

void Tool::inList(Tool* T, bool& found)
{
    if (found)
        return;
    if (this == T) {
        found = true;
        return;
    }
    for (Tool* child : children) {
        child->inList(T, found);
        if (found)
            return;
    }
}

std::deque<Tool*> Tool::Explode()
{
    if (!isSimpleGroup())
        return {};
    return std::deque<Tool*>(children.begin(), children.end());
}

// ---- transforms ------------------------------------------------------------------------

Matrix34<double> Tool::transform() const
{
    return objectMatrix * pivotMatrix;
}

void Tool::worldTransform(Matrix34<double>& M, bool identityFirst) const
{
    if (identityFirst)
        M = Matrix34<double>();
    M *= transform();
    if (Parent)
        Parent->worldTransform(M, false);
}

Matrix34<double> Tool::worldPivot() const
{
    Matrix34<double> M;
    if (Parent)
        Parent->worldTransform(M, false);
    return M;
}

Matrix34<double> Tool::parentPivot() const
{
    return pivotMatrix * worldPivot();
}

Matrix34<double> Tool::element_transform() const
{
    return element ? element->Transform(1.0f) * transform() : transform();
}

void Tool::transformObject(Matrix34<double> const& M, bool links, bool sameParent)
{
    if (refused(M))
        return;
    if (links)
        return forRing(links, sameParent, [&](Tool* t) { t->transformObject(M, false, false); });
    objectMatrix = objectMatrix * M;
}

void Tool::align(Matrix34<double> const& M, bool links, bool sameParent)
{
    if (refused(M))
        return;
    if (links)
        return forRing(links, sameParent, [&](Tool* t) { t->align(M, false, false); });
    objectMatrix = objectMatrix * M;
}

void Tool::transformObjectPivot(Matrix34<double> const& M, bool links, bool sameParent)
{
    if (refused(M))
        return;
    if (links)
        return forRing(links, sameParent, [&](Tool* t) { t->transformObjectPivot(M, false, false); });
    pivotMatrix = M * pivotMatrix;
}

void Tool::transformPivot(Matrix34<double> const& M, bool links, bool sameParent)
{
    if (refused(M))
        return;
    if (links)
        return forRing(links, sameParent, [&](Tool* t) { t->transformPivot(M, false, false); });
    objectMatrix = objectMatrix * inv(M);
    pivotMatrix = M * pivotMatrix;
}

void Tool::transformElement(Matrix34<double> const& M, bool links, bool sameParent)
{
    if (refused(M))
        return;
    if (links)
        return forRing(links, sameParent, [&](Tool* t) { t->transformElement(M, false, false); });
    Matrix34<double> back = inv(M);
    objectMatrix = M * objectMatrix * back;
    pivotMatrix = M * pivotMatrix;
    for (Tool* child : children)
        child->pivotMatrix = child->pivotMatrix * back;
}

// ---- constrained moves and rotations ---------------------------------------------------
// A linked twin of a different scale moves in proportion: by the cube root of the ratio of
// the absolute determinants of the two object matrices. A twin turns by the same angle,
// times the ratio of the rotation multipliers (a meshing gear holds plus or minus one over
// its teeth there), about its own axis.

void Tool::constrainedMoveElement(Matrix34<double> const& M, bool links, bool sameParent)
{
    constrainedMove(M, links, sameParent, true);
}

void Tool::constrainedMoveObject(Matrix34<double> const& M, bool links, bool sameParent)
{
    constrainedMove(M, links, sameParent, false);
}

void Tool::constrainedRotateElement(Matrix34<double> const& M, bool links, bool sameParent)
{
    constrainedRotate(M, links, sameParent, 0);
}

void Tool::constrainedRotateObject(Matrix34<double> const& M, bool links, bool sameParent)
{
    constrainedRotate(M, links, sameParent, 1);
}

void Tool::constrainedRotateObjectPivot(Matrix34<double> const& M, bool links, bool sameParent)
{
    constrainedRotate(M, links, sameParent, 2);
}

Vector3<double> Tool::constrainTranslation(Vector3<double> const& t) const
{
    Vector3<double> axis(translationAxis);
    if (axis.length2() == 0)
        return t;
    return axis * t.dot(axis);
}

void Tool::constrainedMove(Matrix34<double> const& M, bool links, bool sameParent, bool ofElement)
{
    Vector3<double> t = M.translation();
    auto move = [ofElement](Tool* tool, Vector3<double> const& v) {
        auto T = Matrix34<double>::Translation(tool->constrainTranslation(v));
        if (ofElement)
            tool->transformElement(T, false, false);
        else
            tool->transformObject(T, false, false);
    };
    move(this, t);
    if (!links)
        return;
    double own = std::abs(objectMatrix.determinant());
    int steps = 0;
    for (Tool* m = ringNext(this, steps); m != this; m = ringNext(m, steps)) {
        if (!m->isObject() || (sameParent && m->Parent != Parent))
            continue;
        double ratio = own > 0 ? std::cbrt(std::abs(m->objectMatrix.determinant()) / own) : 1.0;
        move(m, t * ratio);
    }
}

void Tool::constrainedRotate(Matrix34<double> const& M, bool links, bool sameParent, int target)
{
    auto turn = [target](Tool* tool, Matrix34<double> const& R) {
        if (target == 0)
            tool->transformElement(R, false, false);
        else if (target == 1)
            tool->transformObject(R, false, false);
        else
            tool->transformObjectPivot(R, false, false);
    };
    Vector3<double> axis(rotationAxis);
    if (axis.length2() == 0)
        return forRing(links, sameParent, [&](Tool* t) { turn(t, M); });
    auto about = [](Vector3<double> const& a, double angle) {
        return Matrix34<double>(
            Matrix3<double>::RotationAroundUnitAxis(a.normalize(), std::sin(angle), std::cos(angle)));
    };
    double angle = Matrix3<double>::ConstrainedAngle(M.linear(), axis);
    turn(this, about(axis, angle));
    if (!links)
        return;
    int steps = 0;
    for (Tool* m = ringNext(this, steps); m != this; m = ringNext(m, steps)) {
        if (!m->isObject() || (sameParent && m->Parent != Parent))
            continue;
        Vector3<double> own(m->rotationAxis);
        double ratio = rotationMultiplier != 0 ? m->rotationMultiplier / rotationMultiplier : 1.0;
        turn(m, about(own.length2() == 0 ? axis : own, angle * ratio));
    }
}

// ---- selection and changes over the ring -----------------------------------------------

void Tool::selectObjects(std::vector<Tool*>& out, bool links, bool sameParent)
{
    forRing(links, sameParent, [&](Tool* t) { out.push_back(t); });
}

void Tool::setFlags(unsigned short bits, bool on, bool links, bool sameParent)
{
    forRing(links, sameParent, [&](Tool* t) { t->flags = on ? (t->flags | bits) : (t->flags & ~bits); });
}

void Tool::select(bool links, bool sameParent)
{
    setFlags(FLAG_SELECTED, true, links, sameParent);
}

void Tool::deselect(bool links, bool sameParent)
{
    setFlags(FLAG_SELECTED, false, links, sameParent);
}

void Tool::highlight(bool links, bool sameParent)
{
    setFlags(FLAG_HIGHLIGHTED, true, links, sameParent);
}

void Tool::unhighlight(bool links, bool sameParent)
{
    setFlags(FLAG_HIGHLIGHTED, false, links, sameParent);
}

void Tool::select(std::vector<Tool*> const& tools, bool links, bool sameParent)
{
    for (Tool* t : tools)
        t->select(links, sameParent);
}

void Tool::deselect(std::vector<Tool*> const& tools, bool links, bool sameParent)
{
    for (Tool* t : tools)
        t->deselect(links, sameParent);
}

void Tool::highlight(std::vector<Tool*> const& tools, bool links, bool sameParent)
{
    for (Tool* t : tools)
        t->highlight(links, sameParent);
}

void Tool::unhighlight(std::vector<Tool*> const& tools, bool links, bool sameParent)
{
    for (Tool* t : tools)
        t->unhighlight(links, sameParent);
}

void Tool::changeMaterial(Material const& source, int mask, bool links, bool sameParent)
{
    forRing(links, sameParent, [&](Tool* t) { t->material.set(source, mask); });
}

void Tool::changeOrientation(unsigned char mode, bool links, bool sameParent)
{
    VEL_ASSERT_MSG(mode < 4, "an orientation mode is 0 to 3");
    auto bits = static_cast<unsigned short>(mode << ORIENTATION_SHIFT);
    forRing(links, sameParent, [&](Tool* t) { t->flags = (t->flags & ~FLAG_ORIENTATION) | bits; });
}

unsigned char Tool::orientation() const
{
    return static_cast<unsigned char>((flags & FLAG_ORIENTATION) >> ORIENTATION_SHIFT);
}

void Tool::changeSpeed(float value, bool links, bool sameParent)
{
    forRing(links, sameParent, [&](Tool* t) { t->speed = value; });
}

void Tool::changeDelay(float value, bool links, bool sameParent)
{
    forRing(links, sameParent, [&](Tool* t) { t->delay = value; });
}

void Tool::setObject(bool on)
{
    flags = on ? (flags | FLAG_OBJECT) : (flags & ~FLAG_OBJECT);
}

void Tool::setObjectHierarchy(bool on)
{
    setObject(on);
    for (Tool* child : children)
        child->setObjectHierarchy(on);
}

bool Tool::isObject() const
{
    return flags & FLAG_OBJECT;
}

// ---- kind queries, element queries, time -----------------------------------------------

bool Tool::isGroup() const
{
    return !element;
}

bool Tool::isSimpleGroup() const
{
    return isSimple() && isGroup();
}

bool Tool::isSimple() const
{
    return ToolType() == 0;
}

bool Tool::isArray() const
{
    return ToolType() == 3 || isSnake() || isEnder();
}

bool Tool::isEnder() const
{
    return ToolType() == 5;
}

bool Tool::isSnake() const
{
    return ToolType() == 4;
}

bool Tool::hasItem() const
{
    return isSnake() || isEnder() || ToolType() == 3;
}

bool Tool::hasItem(Tool* T) const
{
    return T && itemSlot() == T;
}

bool Tool::isSimplex() const
{
    return isSimple() && element && children.empty();
}

bool Tool::elementIsCurve() const
{
    return element && element->Type() >= 5 && element->Type() <= 7;
}

bool Tool::isCurve() const
{
    return (isSimple() || isSnake()) && elementIsCurve();
}

bool Tool::isBiTool() const
{
    return ToolType() == 6 || isConstraint();
}

bool Tool::isRoot() const
{
    return ToolType() == 7;
}

bool Tool::isBone() const
{
    return ToolType() == 8;
}

// Primitives answer 0 to ToolType like plain tools: the kind says so itself.
bool Tool::isPrimitive() const
{
    return false;
}

bool Tool::isGear() const
{
    return ToolType() == 11;
}

bool Tool::isRigidBody() const
{
    return ToolType() == 9;
}

bool Tool::isConstraint() const
{
    return ToolType() == 10;
}

bool Tool::isSimulated() const
{
    return isRigidBody() || isConstraint();
}

bool Tool::isActiveRigidBody() const
{
    return false;
}

bool Tool::isSDF() const
{
    return ToolType() == 12;
}

std::function<bool()> Tool::gSculptStampReady;

bool Tool::acceptsSculpt() const
{
    Element* e = element.get();
    return e && !e->empty() && (dynamic_cast<Mesh*>(e) || dynamic_cast<Curve*>(e));
}

void Tool::sculpt(std::deque<Sculptor*>& sculptors)
{
    if (!acceptsSculpt() || sculptors.empty() || !sculptors.front())
        return;
    int const action = sculptors.front()->action;
    if (action >= 21 && action <= 24 && !(gSculptStampReady && gSculptStampReady()))
        return;
    element->sculpt(sculptors);
}

Shader* Tool::renderShader(Element* e, TRenderState const& state)
{
    // The object's own program where it has one for this draw, else the element's.
    ShaderCodeKey key;
    if (e && hasCode() && ObjectShader::KeyFor(state, e->getDataType(), key))
        if (Shader* custom = use(key))
            return custom;
    return e ? e->renderShader(state) : nullptr;
}

bool Tool::renderBegin(Element* e, TRenderState const& state)
{
    return e && e->renderBegin(state, false);
}

void Tool::render(Element* e, TRenderState const& state, Matrix34<double> const& M, Matrix34<double> const&,
                  int objectId, int items, int elementId, int fourth)
{
    if (!renderBegin(e, state))
        return;
    ShaderCodeKey key;
    if (hasCode() && ObjectShader::KeyFor(state, e->getDataType(), key) && program(key))
        e->renderCustom(state, M, objectId, items, elementId, fourth, material, renderFlags(), float(time));
    else
        e->render(state, M, objectId, items, elementId, fourth, material, renderFlags(), float(time));
    e->renderEnd();
}

Matrix34<double> Tool::transformRender(Matrix34<double> const& W)
{
    Matrix34<double> R = element ? element->Transform(1.0f) * W : W;
    unsigned char mode = orientation();
    if (mode == 2 || mode == 3) {
        // Facing the viewer: the view's rotation undone, the object's size and place kept.
        double size = std::cbrt(std::fabs(R.determinant()));
        Matrix3<double> view = Shader::ModelViewMatrix.linear();
        double viewSize = std::cbrt(std::fabs(view.determinant()));
        Matrix3<double> facing = inv(view) * (viewSize > 0 ? viewSize * size : size);
        R.setLinear(facing);
    }
    return R;
}

void Tool::prepareRender(Element* e)
{
    if (isPrimitive() || !e)
        return;
    e->prepareRender();
}

void Tool::renderBorders(Matrix34<double> const& M, bvec4 const& mask)
{
    if (element)
        element->renderBorders(M, mask);
}

void Tool::renderHelpers(Matrix34<double> const& M, bvec4 const& mask)
{
    if (element)
        element->renderHelpers(M, mask);
}

int Tool::renderFlags() const
{
    int type = 0;
    if (isCurve())
        type = VALUE_CURVE;
    else if (isBone())
        type = VALUE_BONE;
    else if (isRigidBody())
        type = isActiveRigidBody() ? VALUE_RB_DYNAMIC : VALUE_RB_STATIC;
    int word = type << FLAGS_OBJ_TYPE_SHIFT;
    int const m = material.flags;
    if (m & 64)
        word |= FLAG_LIT;
    if (m & 128)
        word |= FLAG_COLOR_GLOWS;
    if (m & 0x2000)
        word |= FLAG_CONTOURS;
    if (m & 0x4000)
        word |= FLAG_FEATURES;
    return word;
}

void Tool::setElement(Shared<Element> const& newElement)
{
    element = newElement;
    Element::advanceUpdate();
}

void Tool::clearSelection()
{
    if (element)
        element->clearSelection();
}

bool Tool::hasBorders()
{
    return element && element->hasBorders();
}

bool Tool::hasHelpers()
{
    return element && element->hasHelpers();
}

void Tool::clearHelpers()
{
}

bool Tool::timer()
{
    time = GlobalTime;
    bool any = element && element->timer(GlobalTime);
    for (Tool* child : children)
        any = child->timer() || any;
    return any;
}

bool Tool::hasChanged() const
{
    return changed;
}

void Tool::setChanged(bool on)
{
    changed = on;
}

void Tool::updateTransformsFromPhysicsWorld()
{
    for (Tool* child : children)
        child->updateTransformsFromPhysicsWorld();
}

} // namespace vel
