#include "Deformers/Sculptor.h"

#include <algorithm>

#include "Core/Assert.h"

namespace vel {

int Sculptor::gSculptAction = 81;

Sculptor::Sculptor(int action, int select, int property, signed char mirror, bool flag, Vector3<float> const& axis)
    : action(action), select(select), property(property), axis(axis), mirror(mirror), flag(flag)
{
}

SBrush const& Sculptor::sample(int i) const
{
    VEL_ASSERT_MSG(!samples.empty(), "a step needs at least one sample");
    return samples[std::size_t(std::clamp(i, 0, count() - 1))];
}

} // namespace vel
