// CommandSaveCurve: a snapshot of a curve's records (vertices, edges, frames, end data), for
// changes whose inverse would cost more than a copy. Built just before the change, pushed
// after it; undo and redo both exchange the snapshot with the live curve.
#pragma once

#include "Memory/Shared.h"
#include "Scene/Command.h"
#include "Scene/Elements/Curve/Curve.h"

namespace vel {

class CommandSaveCurve : public Command {
public:
    static constexpr int TYPE = 64;

    Shared<Element> element; // keeps the curve alive while the step exists
    Curve* curve;            // the same element, as a curve
    Curve snapshot;          // the other state

    explicit CommandSaveCurve(Shared<Element> const& element, int type = TYPE);

    void undo() override;
    void redo() override;
};

} // namespace vel
