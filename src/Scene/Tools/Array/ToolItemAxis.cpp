#include "Scene/Tools/Array/ToolItemAxis.h"

#include "Scene/Elements/Curve/Curve.h"

namespace vel {

Curve* ToolItemAxis::axis() const
{
    return dynamic_cast<Curve*>(element.get());
}

} // namespace vel
