// AABB: axis-aligned box in double precision. An empty box has min at +FLT_MAX and max at
// -FLT_MAX (the largest float held in a double), so that adding any point makes it valid.
// An oriented box has no type of its own: it is a Matrix34<double> with an AABB in its frame.
#pragma once

#include "Math/Matrix34.h"

#include <algorithm>
#include <deque>

namespace vel {

struct AABB {
    static constexpr double EMPTY = 3.4028234663852886e38;

    Vector3<double> min{EMPTY, EMPTY, EMPTY};
    Vector3<double> max{-EMPTY, -EMPTY, -EMPTY};

    bool empty() const { return min.x > max.x || min.y > max.y || min.z > max.z; }

    void add(Vector3<double> const& p)
    {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }
    void add(AABB const& b)
    {
        if (b.empty())
            return;
        add(b.min);
        add(b.max);
    }

    Vector3<double> center() const { return (min + max) * 0.5; }
    Vector3<double> size() const { return max - min; }

    // The box of the eight transformed corners; an empty box stays empty.
    AABB transform(Matrix34<double> const& M) const
    {
        AABB r;
        if (empty())
            return r;
        for (int i = 0; i < 8; ++i)
            r.add(Vector3<double>(i & 1 ? max.x : min.x, i & 2 ? max.y : min.y, i & 4 ? max.z : min.z) * M);
        return r;
    }

    // Grows the box by d on every side; an empty box stays empty.
    AABB& inflate(double d)
    {
        if (empty())
            return *this;
        min -= Vector3<double>(d, d, d);
        max += Vector3<double>(d, d, d);
        return *this;
    }

    bool contains(Vector3<double> const& p) const
    {
        return p.x >= min.x && p.y >= min.y && p.z >= min.z && p.x <= max.x && p.y <= max.y && p.z <= max.z;
    }
};

// The box of a sequence of points (any Vector3<T>).
template <class T>
AABB CalculatePointsAABB(std::deque<Vector3<T>> const& points)
{
    AABB box;
    for (Vector3<T> const& p : points)
        box.add(Vector3<double>(p));
    return box;
}

} // namespace vel
