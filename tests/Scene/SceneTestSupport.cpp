#include "SceneTestSupport.h"

#include "OpenGL/Rendering.h"

#include <cmath>
#include <set>

namespace vel::test {

Shared<Element> makeElement(int kind)
{
    return Shared<Element>(new TestElement(kind));
}

bool ToolState::operator==(ToolState const& o) const
{
    return tool == o.tool && parent == o.parent && next == o.next && object == o.object && pivot == o.pivot &&
           flags == o.flags && material == o.material && rotationAxis == o.rotationAxis &&
           translationAxis == o.translationAxis && rotationMultiplier == o.rotationMultiplier &&
           speed == o.speed && delay == o.delay;
}

namespace {

void collect(Tool* t, std::vector<ToolState>& out)
{
    out.push_back({t, t->Parent, t->linkNext, t->objectMatrix, t->pivotMatrix, t->flags, t->material, t->rotationAxis,
                   t->translationAxis, t->rotationMultiplier, t->speed, t->delay});
    for (Tool* child : t->children)
        collect(child, out);
}

void check(Tool* t, std::set<Tool*>& seen, std::vector<std::string>& out)
{
    if (!seen.insert(t).second) {
        out.push_back("tool " + std::to_string(t->id) + " is listed twice");
        return;
    }
    size_t cap = 10000000;
    size_t steps = 0;
    Tool* m = t->linkNext;
    while (m != t && steps < cap) {
        m = m->linkNext;
        ++steps;
    }
    if (m != t)
        out.push_back("the ring of tool " + std::to_string(t->id) + " does not close");
    for (Tool* child : t->children) {
        if (child->Parent != t)
            out.push_back("child " + std::to_string(child->id) + " names another parent than " +
                          std::to_string(t->id));
        check(child, seen, out);
    }
}

} // namespace

std::vector<ToolState> snapshot(Tool* root)
{
    std::vector<ToolState> out;
    for (Tool* child : root->children)
        collect(child, out);
    return out;
}

std::string difference(std::vector<ToolState> const& actual, std::vector<ToolState> const& expected)
{
    if (actual.size() != expected.size())
        return std::to_string(actual.size()) + " tools instead of " + std::to_string(expected.size());
    for (size_t i = 0; i < actual.size(); ++i) {
        ToolState const& a = actual[i];
        ToolState const& e = expected[i];
        if (a == e)
            continue;
        std::string what = a.tool != e.tool ? "tool" : a.parent != e.parent ? "parent"
                           : a.next != e.next     ? "link"
                           : a.object != e.object ? "object matrix"
                           : a.pivot != e.pivot   ? "pivot matrix"
                           : a.flags != e.flags   ? "flags " + std::to_string(a.flags) + " instead of " + std::to_string(e.flags)
                           : a.material != e.material ? "material"
                                                      : "constraints or animation";
        return "entry " + std::to_string(i) + " (tool " + std::to_string(e.tool->id) + "): " + what;
    }
    return {};
}

std::vector<std::string> validate(Tool* root)
{
    std::vector<std::string> out;
    std::set<Tool*> seen;
    check(root, seen, out);
    return out;
}

Vector3<double> worldPoint(Tool const* tool, Vector3<double> const& p)
{
    Matrix34<double> M;
    tool->worldTransform(M, true);
    return p * M;
}

Matrix34<double> moveBy(double x, double y, double z)
{
    return Matrix34<double>::Translation(Vector3<double>(x, y, z));
}

bool near(Matrix34<double> const& a, Matrix34<double> const& b, double eps)
{
    for (int i = 0; i < 12; ++i)
        if (std::abs(a.m[i] - b.m[i]) > eps)
            return false;
    return true;
}

bool near(Vector3<double> const& a, Vector3<double> const& b, double eps)
{
    return (a - b).length() <= eps;
}

void TreeTest::SetUp()
{
    History& h = History::instance();
    h.clear();
    h.enabled = true;
    h.active = true;
    h.notify = true;
    h.capacity = 1000;
    ASSERT_EQ(Tool::COUNT, 0) << "a test before this one left tools alive";
    root = new Root;
}

void TreeTest::TearDown()
{
    delete root;
    History::instance().clear();
    EXPECT_EQ(Tool::COUNT, 0);
    Tool::COUNT = 0; // one leak is reported once, not by every later test
}

Tool* TreeTest::add(Tool* parent, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    Tool* t = new Tool(Shared<Element>(), object, pivot);
    parent->addChild(t);
    return t;
}

Tool* TreeTest::addObject(Tool* parent, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    Tool* t = add(parent, object, pivot);
    t->setObject(true);
    return t;
}

void SceneTest::SetUp()
{
    History& h = History::instance();
    h.clear();
    h.enabled = true;
    h.active = true;
    ASSERT_EQ(Tool::COUNT, 0) << "a test before this one left tools alive";
    ASSERT_EQ(Element::COUNT, 0) << "a test before this one left elements alive";
    Rendering& r = Rendering::instance();
    r.style = Rendering::STYLE_PBR;
    r.showCurves = r.showTransparent = r.showRigidBodies = true;
    scene = new Scene;
    root = scene->root;
}

void SceneTest::TearDown()
{
    delete scene;
    Scene::UITools.clear();
    History::instance().clear();
    EXPECT_EQ(Tool::COUNT, 0);
    EXPECT_EQ(Element::COUNT, 0);
    Tool::COUNT = 0; // one leak is reported once, not by every later test
    Element::COUNT = 0;
}

Tool* SceneTest::add(Tool* parent, Shared<Element> const& e, bool object, Matrix34<double> const& M)
{
    Tool* t = new Tool(e, M);
    parent->addChild(t);
    t->setObject(object);
    return t;
}

} // namespace vel::test
