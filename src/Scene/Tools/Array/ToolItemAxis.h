// ToolItemAxis: a ToolItem whose own element is a Curve, the axis along which it shows the
// item (arrays, snakes, enders).
#pragma once

#include "Scene/Tools/Array/ToolItem.h"

namespace vel {

class Curve;

class ToolItemAxis : public ToolItem {
public:
    using ToolItem::ToolItem;

    int ToolType() const override { return 2; }
    // The element as a curve; null when it is none (a damaged file).
    Curve* axis() const;

protected:
    explicit ToolItemAxis(Unrecorded u)
        : ToolItem(u)
    {
    }
};

} // namespace vel
