// AABB2: the two-dimensional axis-aligned box, with the same empty convention as AABB.
#pragma once

#include "Math/AABB.h"
#include "Math/Vector2.h"

namespace vel {

struct AABB2 {
    Vector2<double> min{AABB::EMPTY, AABB::EMPTY};
    Vector2<double> max{-AABB::EMPTY, -AABB::EMPTY};

    bool empty() const { return min.x > max.x || min.y > max.y; }
    void add(Vector2<double> const& p)
    {
        min = {std::min(min.x, p.x), std::min(min.y, p.y)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y)};
    }
    AABB2& inflate(double d)
    {
        if (!empty()) {
            min -= Vector2<double>(d, d);
            max += Vector2<double>(d, d);
        }
        return *this;
    }
    bool contains(Vector2<double> const& p) const
    {
        return p.x >= min.x && p.y >= min.y && p.x <= max.x && p.y <= max.y;
    }
    Vector2<double> center() const { return (min + max) * 0.5; }
    Vector2<double> size() const { return max - min; }
};

} // namespace vel
