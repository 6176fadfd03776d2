// CommandSubdivideCurve: a curve subdivision as one step. The snapshot keeps the curve from
// before; undo gives the curve a copy of it, and redo subdivides again, so that the snapshot
// is the coarse curve in either state.
#pragma once

#include "Scene/Commands/CommandSaveCurve.h"

#include <string>

namespace vel {

class CommandSubdivideCurve : public CommandSaveCurve {
public:
    static constexpr int TYPE = 65;

    bool smooth; // the subdivision's own argument, repeated by redo

    // Built before `curve->subdivide(smooth)`, pushed after it.
    CommandSubdivideCurve(Shared<Element> const& element, bool smooth);

    void undo() override;
    void redo() override;
    std::string name() override;
};

} // namespace vel
