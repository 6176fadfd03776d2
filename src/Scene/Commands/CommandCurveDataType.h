// CommandCurveDataType: a change of a curve's data type (plain, per-end materials, UVs),
// holding the type and the two edge arrays it decides; undo and redo exchange them with the
// curve's. Built before the change, pushed after it; the edges must be the same in both.
#pragma once

#include "Math/Pbr.h"
#include "Memory/Shared.h"
#include "Scene/Command.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vel {

class Curve;
class Element;

class CommandCurveDataType : public Command {
public:
    static constexpr int TYPE = 66;

    Shared<Element> element;
    Curve* curve;
    int dataType;
    std::vector<Pbr> materials;
    std::vector<uint32_t> uvs;

    explicit CommandCurveDataType(Shared<Element> const& element);

    void undo() override;
    void redo() override;
    std::string name() override;
    void swap();
};

} // namespace vel
