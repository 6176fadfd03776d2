#include "Scene/Commands/ToolSwapCommands.h"

#include "Scene/Tool.h"

#include <utility>

namespace vel {

CommandConstrainRotationObject::CommandConstrainRotationObject(Tool* tool)
    : CommandChangeObject(TYPE, tool)
    , axis(tool->rotationAxis)
{
}

void CommandConstrainRotationObject::swap()
{
    std::swap(tool->rotationAxis, axis);
}

// The older command keeps the value from before the drag; the tool has the newest.
bool CommandConstrainRotationObject::isSame(Command* previous)
{
    return static_cast<CommandConstrainRotationObject*>(previous)->tool == tool;
}

std::string CommandConstrainRotationObject::name()
{
    return "Swap Rotation Axis";
}

CommandConstrainRotationObjects::CommandConstrainRotationObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , axes(capture(&Tool::rotationAxis))
{
}

void CommandConstrainRotationObjects::swap()
{
    exchange(axes, &Tool::rotationAxis);
}

std::string CommandConstrainRotationObjects::name()
{
    return "Constrain Rotation";
}

CommandConstrainTranslationObjects::CommandConstrainTranslationObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , axes(capture(&Tool::translationAxis))
{
}

void CommandConstrainTranslationObjects::swap()
{
    exchange(axes, &Tool::translationAxis);
}

std::string CommandConstrainTranslationObjects::name()
{
    return "Constrain Translation";
}

CommandRotationMultiplierObjects::CommandRotationMultiplierObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , multipliers(capture(&Tool::rotationMultiplier))
{
}

void CommandRotationMultiplierObjects::swap()
{
    exchange(multipliers, &Tool::rotationMultiplier);
}

std::string CommandRotationMultiplierObjects::name()
{
    return "Rotation Multiplier";
}

CommandSpeedObjects::CommandSpeedObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , speeds(capture(&Tool::speed))
{
}

void CommandSpeedObjects::swap()
{
    exchange(speeds, &Tool::speed);
}

std::string CommandSpeedObjects::name()
{
    return "Objects Speed";
}

CommandDelayObjects::CommandDelayObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , delays(capture(&Tool::delay))
{
}

void CommandDelayObjects::swap()
{
    exchange(delays, &Tool::delay);
}

std::string CommandDelayObjects::name()
{
    return "Objects Delay";
}

CommandMaterialObjects::CommandMaterialObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
    , materials(capture(&Tool::material))
{
}

void CommandMaterialObjects::swap()
{
    exchange(materials, &Tool::material);
}

std::string CommandMaterialObjects::name()
{
    return "Objects Material";
}

CommandFlipNormalsObjects::CommandFlipNormalsObjects(std::vector<Tool*> const& targets)
    : CommandChangeObjects(TYPE, targets)
{
}

void CommandFlipNormalsObjects::swap()
{
    for (Tool* t : targets)
        t->material.flags ^= Material::FLAG_FLIPPED_NORMALS;
}

std::string CommandFlipNormalsObjects::name()
{
    return "Flip Normals Objects";
}

} // namespace vel
