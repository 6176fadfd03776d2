// A long random sequence of edits, undos, redos and jumps, checked after every step
// against the snapshot the tree had when the history stood at the same place.
#include "Core/Communicate.h"
#include "Scene/Commands/CommandTransformObjects.h"
#include "Scene/Commands/ToolSwapCommands.h"
#include "SceneTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <random>

namespace vel::test {
namespace {

struct Run {
    unsigned seed;
    unsigned capacity; // small capacities push steps out of the front all the time
    int steps;
};

class RandomEditTest : public TreeTest, public ::testing::WithParamInterface<Run> {
protected:
    std::mt19937 rng;
    std::vector<Shared<Element>> elements;
    // states[i] is the tree when the history's currentIndex is i - 1.
    std::deque<std::vector<ToolState>> states;
    int popFronts = 0;
    QMetaObject::Connection connection;

    void SetUp() override
    {
        TreeTest::SetUp();
        rng.seed(GetParam().seed);
        connection = QObject::connect(&Communicate::instance(), &Communicate::historyPopFront, [this] { ++popFronts; });
        for (int kind : {1, 5})
            elements.push_back(makeElement(kind));
        history().active = false;
        Tool* group = add(root);
        group->setObject(true);
        for (int i = 0; i < 6; ++i)
            add(i % 2 ? group : root, randomMatrix(), randomMatrix());
        history().active = true;
        history().capacity = GetParam().capacity;
        states.push_back(snapshot(root));
    }

    void TearDown() override
    {
        QObject::disconnect(connection);
        elements.clear();
        TreeTest::TearDown();
    }

    int uniform(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
    double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }

    Matrix34<double> randomMatrix()
    {
        Vector3<double> axis(real(-1, 1), real(-1, 1), real(-1, 1) + 2);
        double angle = real(-3, 3);
        Matrix3<double> R = Matrix3<double>::RotationAroundUnitAxis(axis.normalize(), std::sin(angle), std::cos(angle));
        return Matrix34<double>(R * real(0.5, 2), Vector3<double>(real(-5, 5), real(-5, 5), real(-5, 5)));
    }

    std::vector<Tool*> tools(Tool* top = nullptr)
    {
        std::vector<Tool*> list;
        (top ? top : root)->toList(list);
        return list;
    }

    Tool* anyTool()
    {
        auto list = tools();
        return list.empty() ? nullptr : list[uniform(0, int(list.size()) - 1)];
    }

    // A parent for `t`: the root or a tool outside t's subtree.
    Tool* parentFor(Tool* t)
    {
        auto list = tools();
        for (int tries = 0; tries < 8 && !list.empty(); ++tries) {
            Tool* p = list[uniform(0, int(list.size()) - 1)];
            bool inside = false;
            if (t)
                t->inList(p, inside);
            if (!inside)
                return p;
        }
        return root;
    }

    void edit()
    {
        Tool* t = anyTool();
        int what = uniform(0, 11);
        if (!t)
            what = 0;
        switch (what) {
        case 0: {
            Tool* created = new Tool(uniform(0, 1) ? elements[uniform(0, 1)] : Shared<Element>(), randomMatrix(),
                                     randomMatrix());
            Tool* parent = parentFor(nullptr);
            if (uniform(0, 1))
                created->addToParent(parent, randomMatrix());
            else
                parent->addChild(created);
            break;
        }
        case 1:
            t->remove();
            break;
        case 2:
            t->link(anyTool());
            break;
        case 3:
            t->unlink(uniform(0, 1));
            break;
        case 4: {
            Tool* parent = parentFor(t);
            t->subFromParent();
            parent->addChild(t);
            break;
        }
        case 5:
        case 6: {
            auto* command = new CommandTransformObjects(tools());
            Matrix34<double> M = randomMatrix();
            bool links = uniform(0, 1);
            switch (uniform(0, 5)) {
            case 0: t->constrainedMoveObject(M, links, false); break;
            case 1: t->constrainedRotateObject(M, links, true); break;
            case 2: t->transformElement(M, links, false); break;
            case 3: t->transformPivot(M, links, false); break;
            case 4: t->constrainedMoveElement(M, links, false); break;
            default: t->constrainedRotateObjectPivot(M, links, false); break;
            }
            history().push(command);
            break;
        }
        case 7: {
            auto* command = new CommandMaterialObjects(tools());
            Material m;
            m.pbr.set_color_alpha(Vector4<float>(float(real(0, 1)), 0.5f, 0.25f, 1), true);
            m.scalar = float(real(0, 3));
            m.flags = uniform(0, 0x7fff);
            t->changeMaterial(m, uniform(0, 0x7fff), true, false);
            history().push(command);
            break;
        }
        case 8: {
            if (tools(t).size() > 12)
                break;
            Tool* copy = uniform(0, 1) ? t->cloneTool(uniform(0, 1)) : t->cloneObject(randomMatrix(), randomMatrix());
            parentFor(nullptr)->addChild(copy);
            break;
        }
        case 9: {
            auto all = tools();
            history().push(new CommandConstrainRotationObjects(all));
            history().push(new CommandConstrainTranslationObjects(all));
            history().push(new CommandRotationMultiplierObjects(all));
            t->rotationAxis = Vector3<float>(0, 0, float(uniform(0, 2)));
            t->translationAxis = Vector3<float>(float(uniform(0, 1)), 1, 0);
            t->rotationMultiplier = float(uniform(-3, 3));
            break;
        }
        case 10: {
            auto all = tools();
            history().push(new CommandSpeedObjects(all));
            history().push(new CommandDelayObjects(all));
            t->changeSpeed(float(uniform(0, 4)), true, false);
            t->changeDelay(float(uniform(0, 4)), true, true);
            break;
        }
        default: {
            auto* command = new CommandFlipNormalsObjects(tools());
            command->redo();
            history().push(command);
            break;
        }
        }
    }

    // One edit, recorded as one step: the states past the current one go, as the redo
    // tail does, and so do those pushed out of the front.
    void recordEdit()
    {
        int before = history().currentIndex;
        int fronts = popFronts;
        history().superBegin("Edit", false);
        edit();
        history().superEnd();
        states.resize(size_t(before + 2));
        for (int i = popFronts - fronts; i > 0; --i)
            states.pop_front();
        states.push_back(snapshot(root));
    }

    void check(int step)
    {
        ASSERT_EQ(states.size(), history().commands.size() + 1) << "step " << step;
        ASSERT_EQ(validate(root), std::vector<std::string>()) << "step " << step;
        ASSERT_EQ(difference(snapshot(root), states[size_t(history().currentIndex + 1)]), "") << "step " << step;
    }
};

TEST_P(RandomEditTest, UndoAndRedoAlwaysGiveBackTheRecordedTree)
{
    for (int step = 0; step < GetParam().steps; ++step) {
        int roll = uniform(0, 99);
        if (roll < 55)
            recordEdit();
        else if (roll < 75)
            history().undo();
        else if (roll < 97)
            history().redo();
        else
            history().jumpTo(uniform(-3, int(history().commands.size()) + 3));
        check(step);
        if (HasFatalFailure())
            return;
    }
    history().jumpTo(-1);
    check(-1);
    history().jumpTo(100000);
    check(-2);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEditTest,
                         ::testing::Values(Run{1, 1000, 4000}, Run{2, 1000, 4000}, Run{3, 40, 4000},
                                           Run{4, 7, 4000}));

} // namespace
} // namespace vel::test
