// Shared fixtures of the scene tests: an element to hang on tools, a fixture that owns a
// root and an empty recording history, a snapshot of everything undo must restore, and a
// validator of the tree's invariants.
#pragma once

#include "Math/Matrix34.h"
#include "Scene/Command.h"
#include "Scene/Element.h"
#include "Scene/Material.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vel::test {

// The element of the scene tests: a unit box of the given kind that draws with `shader`,
// counts what the scene asks of it, and may be a composite of `parts`.
class TestElement : public Element {
public:
    int kind;
    double lastTime = -1;
    bool changes = false; // what timer() answers
    Shader* shader = nullptr; // what renderShader answers
    std::vector<Element*> parts; // composites list these after themselves
    int boxes = 0;    // calls of calculateAABB
    int updates = 0;  // calls of update
    int saves = 0;    // calls of prepareSave

    explicit TestElement(int kind = 1)
        : kind(kind)
    {
    }
    int Type() const override { return kind; }
    unsigned BlockId() const override { return 0xe00000ffu; }
    Shader* renderShader(TRenderState const&) const override { return shader; }
    bool timer(double t) override
    {
        lastTime = t;
        return changes;
    }
    void calculateAABB(Matrix34<double> const& M) override
    {
        ++boxes;
        Element::calculateAABB(M);
    }
    void update() override
    {
        ++updates;
        Element::update();
    }
    void prepareSave() override { ++saves; }
    void elements(std::vector<Element*>& out) override
    {
        out.push_back(this);
        out.insert(out.end(), parts.begin(), parts.end());
    }
};

Shared<Element> makeElement(int kind = 1);

// A kind with an item slot, as the composites that show another object have.
class ItemHolder : public Tool {
public:
    Tool* item = nullptr;

    using Tool::Tool;
    using Tool::hasItem;
    bool hasItem() const override { return true; }
    Tool* itemSlot() const override { return item; }
    void setItemSlot(Tool* t) override { item = t; }
};

// A command that writes what happens to it into a shared journal: "u" + tag on undo,
// "r" + tag on redo, "~" + tag on destruction.
class Probe : public Command {
public:
    static constexpr int TYPE = 100;
    std::vector<std::string>* journal;
    std::string tag;
    bool same = false; // what isSame answers

    Probe(std::vector<std::string>* journal, std::string tag, int type = TYPE)
        : Command(type)
        , journal(journal)
        , tag(std::move(tag))
    {
    }
    ~Probe() override { journal->push_back("~" + tag); }
    void undo() override
    {
        journal->push_back("u" + tag);
        Command::undo();
    }
    void redo() override
    {
        journal->push_back("r" + tag);
        Command::redo();
    }
    bool isSame(Command*) override { return same; }
};

// Everything of one tool that an undo must give back.
struct ToolState {
    Tool* tool;
    Tool* parent;
    Tool* next;
    Matrix34<double> object;
    Matrix34<double> pivot;
    unsigned short flags;
    Material material;
    Vector3<float> rotationAxis;
    Vector3<float> translationAxis;
    float rotationMultiplier;
    float speed;
    float delay;

    bool operator==(ToolState const& o) const;
};

// The tree below `root`, pre-order.
std::vector<ToolState> snapshot(Tool* root);

// The first difference between two snapshots, in words; empty when they are equal.
std::string difference(std::vector<ToolState> const& actual, std::vector<ToolState> const& expected);

// Broken invariants of the tree below `root`: parents that do not list their children,
// tools listed twice, rings that do not close. Empty when the tree is sound.
std::vector<std::string> validate(Tool* root);

// The point p of `tool`'s element, in the world.
Vector3<double> worldPoint(Tool const* tool, Vector3<double> const& p);

// A pure translation.
Matrix34<double> moveBy(double x, double y, double z);

bool near(Matrix34<double> const& a, Matrix34<double> const& b, double eps = 1e-9);
bool near(Vector3<double> const& a, Vector3<double> const& b, double eps = 1e-9);

// A root in a fresh, recording history; the tree and the history go on teardown, and
// no tool may be left alive.
class TreeTest : public ::testing::Test {
protected:
    Root* root = nullptr;

    void SetUp() override;
    void TearDown() override;

    History& history() { return History::instance(); }
    // A new tool under `parent`.
    Tool* add(Tool* parent, Matrix34<double> const& object = Matrix34<double>(),
              Matrix34<double> const& pivot = Matrix34<double>());
    // A new tool under `parent` that answers as an object.
    Tool* addObject(Tool* parent, Matrix34<double> const& object = Matrix34<double>(),
                    Matrix34<double> const& pivot = Matrix34<double>());
};

// A tool answering a chosen kind number (8 bone, 9 rigid body, ...).
class KindTool : public Tool {
public:
    int type;
    explicit KindTool(int type, Shared<Element> const& e = Shared<Element>())
        : Tool(e)
        , type(type)
    {
    }
    int ToolType() const override { return type; }
};

// A free-standing Scene in a fresh, recording history, with the render settings of the
// list at their defaults; neither a tool nor an element may be left alive at teardown.
class SceneTest : public ::testing::Test {
protected:
    Scene* scene = nullptr;
    Root* root = nullptr;

    void SetUp() override;
    void TearDown() override;

    History& history() { return History::instance(); }
    // A new tool under `parent` showing `e`, an object when `object`.
    Tool* add(Tool* parent, Shared<Element> const& e = Shared<Element>(), bool object = false,
              Matrix34<double> const& M = Matrix34<double>());
};

} // namespace vel::test
