// The swap commands on the constraint, animation and material fields of tools.
//
// One family in one pair of files, against the rule of one class per pair: each class is
// a field pointer and a name on top of CommandChangeObject or CommandChangeObjects, and
// eight files apiece would hide that they are the same thing. Every constructor takes the
// present values of its targets; the caller changes the tools, then pushes the command.
#pragma once

#include "Math/Vector3.h"
#include "Scene/Commands/CommandChangeObject.h"
#include "Scene/Commands/CommandChangeObjects.h"
#include "Scene/Material.h"

#include <deque>
#include <string>
#include <vector>

namespace vel {

// The rotation axis of one tool, while it is dragged: mergeable by the caller, and the
// steps of one drag on one tool fold into the first.
class CommandConstrainRotationObject : public CommandChangeObject {
public:
    static constexpr int TYPE = 40;
    Vector3<float> axis;

    explicit CommandConstrainRotationObject(Tool* tool);
    void swap() override;
    bool isSame(Command* previous) override;
    std::string name() override;
};

class CommandConstrainRotationObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 41;
    std::deque<Vector3<float>> axes;

    explicit CommandConstrainRotationObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

class CommandConstrainTranslationObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 42;
    std::deque<Vector3<float>> axes;

    explicit CommandConstrainTranslationObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

class CommandRotationMultiplierObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 43;
    std::deque<float> multipliers;

    explicit CommandRotationMultiplierObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

class CommandSpeedObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 44;
    std::deque<float> speeds;

    explicit CommandSpeedObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

class CommandDelayObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 45;
    std::deque<float> delays;

    explicit CommandDelayObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

class CommandMaterialObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 46;
    std::deque<Material> materials;

    explicit CommandMaterialObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

// Holds no values: both directions toggle the flipped-normals bit of each target.
class CommandFlipNormalsObjects : public CommandChangeObjects {
public:
    static constexpr int TYPE = 47;

    explicit CommandFlipNormalsObjects(std::vector<Tool*> const& targets);
    void swap() override;
    std::string name() override;
};

} // namespace vel
