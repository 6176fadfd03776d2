#include "Scene/Tools/SDFTool/SDFEvaluator.h"

#include "Scene/Tools/SDFTool/SDFTool.h"

#include <algorithm>
#include <cmath>

namespace vel {

namespace {

constexpr float PI = 3.14159265358979f;

float Length2(float x, float y)
{
    return std::sqrt(x * x + y * y);
}

float Clamp(float v, float lo, float hi)
{
    return std::min(std::max(v, lo), hi);
}

float Mix(float a, float b, float t)
{
    return a + (b - a) * t;
}

// The box distance with rounding r (0 for the clip box).
float BoxDistance(Vector3<float> p, Vector3<float> const& h, float r)
{
    float qx = std::abs(p.x) - h.x + r, qy = std::abs(p.y) - h.y + r, qz = std::abs(p.z) - h.z + r;
    float ox = std::max(qx, 0.0f), oy = std::max(qy, 0.0f), oz = std::max(qz, 0.0f);
    return std::sqrt(ox * ox + oy * oy + oz * oz) + std::min(std::max(qx, std::max(qy, qz)), 0.0f) - r;
}

// One axis of a linear array.
float Repeat(float q, float step, int count)
{
    if (count <= 1 || step == 0)
        return q;
    int m = (count + 1) & 1;
    int l = count / 2;
    float shifted = q + float(m) * step * 0.5f;
    return shifted - step * Clamp(std::round(shifted / step), float(m - l), float(l));
}

// Walks the expression in list order with a stack of open groups. `leaf(i)` gives entry i's
// value, `join(i, r, a)` combines a into r by entry i's operation, `skip(i)` leaves an
// entry's value out. Returns false when no value was made.
template <class V, class Leaf, class Join, class Skip>
bool Fold(std::vector<SDFEvaluator::Entry> const& entries, Leaf const& leaf, Join const& join, Skip const& skip, V& out)
{
    struct Slot {
        V value;
        bool empty;
        int opener;
    };
    Slot stack[SDFEvaluator::MAX_DEPTH + 1];
    int depth = 0;
    stack[0] = {V(), true, -1};
    auto put = [&](Slot& slot, int i, V const& a) {
        if (slot.empty) {
            slot.value = a;
            slot.empty = false;
        } else {
            slot.value = join(i, slot.value, a);
        }
    };
    auto closeOne = [&] {
        Slot group = stack[depth--];
        if (!group.empty)
            put(stack[depth], group.opener, group.value);
    };
    int const n = int(entries.size());
    for (int i = 0; i < n; ++i) {
        SDFEvaluator::Entry const& e = entries[i];
        for (int k = 0; k < e.open && depth < SDFEvaluator::MAX_DEPTH; ++k)
            stack[++depth] = {V(), true, i};
        if (!skip(i))
            put(stack[depth], i, leaf(i));
        for (int k = 0; k < e.close && depth > 0; ++k)
            closeOne();
    }
    while (depth > 0)
        closeOne();
    if (stack[0].empty)
        return false;
    out = stack[0].value;
    return true;
}

AABB Intersect(AABB const& a, AABB const& b)
{
    AABB r;
    for (int i = 0; i < 3; ++i) {
        r.min[i] = std::max(a.min[i], b.min[i]);
        r.max[i] = std::min(a.max[i], b.max[i]);
    }
    return r.empty() ? AABB() : r;
}

bool Overlap(AABB const& a, AABB const& b)
{
    return !a.empty() && !b.empty() && !Intersect(a, b).empty();
}

double SmallestExtent(AABB const& b)
{
    Vector3<double> s = b.size();
    return std::min(s.x, std::min(s.y, s.z));
}

} // namespace

// ---- building --------------------------------------------------------------------------

void SDFEvaluator::build(std::deque<SDFStruct> const& list)
{
    std::vector<SDFStruct const*> sorted;
    sorted.reserve(list.size());
    for (SDFStruct const& s : list)
        if (s.tool)
            sorted.push_back(&s);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](SDFStruct const* a, SDFStruct const* b) { return a->prio() < b->prio(); });
    std::vector<SDFObj> objs;
    std::vector<Matrix34<double>> worlds;
    for (SDFStruct const* s : sorted) {
        objs.push_back(s->tool->sdf);
        objs.back().priority = s->prio();
        objs.back().bracket = s->bracket();
        worlds.push_back(s->world);
    }
    build(objs, worlds);
}

void SDFEvaluator::build(std::vector<SDFObj> const& objs, std::vector<Matrix34<double>> const& worlds)
{
    entries.clear();
    bounds = AABB();
    base = Matrix34<double>();
    if (objs.empty())
        return;
    Matrix34<double> first = worlds[0];
    base = first.invertible() ? inv(first) : Matrix34<double>();
    std::vector<AABB> boxes;
    entries.reserve(objs.size());
    for (size_t i = 0; i < objs.size(); ++i) {
        SDFObj const& o = objs[i];
        Entry e;
        // The entry's space from the space of evaluation: W0 then inverse of Wi.
        Matrix34<double> toLocal, fromLocal;
        if (i > 0 && worlds[i].invertible()) {
            toLocal = first * inv(worlds[i]);
            fromLocal = worlds[i] * base;
        }
        for (int k = 0; k < 12; ++k)
            e.m[k] = float(toLocal.m[k]);
        double det = std::abs(toLocal.determinant());
        double s = det > 0 && std::isfinite(det) ? std::cbrt(det) : 1.0;
        e.scale = float(1.0 / s);
        e.shape = o.shaderShape();
        e.opClass = o.operation;
        int blend = o.falloff > 1e-5f ? o.blend : SDF_BLEND_SHARP;
        e.op = o.operation == SDF_NOOP ? 0 : (o.operation - 1) * 3 + blend;
        e.shell = o.shell;
        e.joint = o.joint;
        e.h = o.halfDims();
        e.R = o.R;
        e.thickness = o.thickness * 0.5f;
        e.falloff = (o.operation == SDF_INFLATE ? o.falloff / 10 : o.falloff) * e.scale;
        e.joint0 = o.joint0;
        e.joint1 = o.joint1;
        float half = o.dims.z * 0.5f * PI / 180.0f;
        e.sinHalf = std::sin(half);
        e.cosHalf = std::cos(half);
        if (o.clipActive()) {
            AABB shapeBox = o._obb_tight_shape();
            o._obb_add_shell(shapeBox);
            AABB c = o.clipBox(shapeBox);
            e.clip = true;
            e.clipOnShell = o.clipShell != 0;
            e.clipCenter = Vector3<float>(c.center());
            e.clipHalf = Vector3<float>(c.size() * 0.5);
        }
        if (o.arrayActive()) {
            e.arrayType = o.arrayType;
            if (o.arrayType == SDF_ARRAY_LINEAR) {
                e.step = e.h * o.step;
                e.counts[0] = o.nx;
                e.counts[1] = o.ny;
                e.counts[2] = o.nz;
            } else {
                e.rotCount = o.count;
                e.angleStep = o.arrayAngle / float(o.count - 1);
                e.angleLimit = o.arrayAngle * 0.5f + PI;
                e.radius = o.arrayRadius * e.h[(o.arrayType / 2) % 3];
            }
        }
        e.open = std::max(0, int(o.bracket));
        e.close = std::max(0, -int(o.bracket));
        entries.push_back(e);
        AABB local = o.obb_tight();
        boxes.push_back(local.transform(fromLocal));
    }
    computeBounds(boxes);
}

// The class rules of the tree's box, in the same grouping as the distance.
void SDFEvaluator::computeBounds(std::vector<AABB> const& boxes)
{
    auto leaf = [&](int i) { return boxes[i]; };
    auto join = [&](int i, AABB const& r, AABB const& a) {
        switch (entries[i].opClass) {
        case SDF_NOOP:
        case SDF_ADD: {
            AABB u = r;
            u.add(a);
            return u;
        }
        case SDF_INT:
            return Intersect(r, a);
        case SDF_INFLATE:
            if (Overlap(r, a)) {
                AABB grown = r;
                // The entry keeps a tenth of the falloff, scaled: the raw value is ten times that.
                return grown.inflate(SmallestExtent(a) * 3 * entries[i].falloff / entries[i].scale);
            }
            return r;
        default:
            return r;
        }
    };
    AABB box;
    if (!Fold(entries, leaf, join, [](int) { return false; }, box) || box.empty()) {
        bounds = AABB();
        return;
    }
    bounds = box.inflate(SmallestExtent(box) * 0.02);
}

// ---- the pieces ------------------------------------------------------------------------

float SDFEvaluator::shapeDistance(Entry const& e, Vector3<float> p)
{
    Vector3<float> const& h = e.h;
    switch (e.shape) {
    case SDF_SPHERE:
        return p.length() - h.x;
    case SDF_ELLIPSOID: {
        Vector3<float> a(p.x / h.x, p.y / h.y, p.z / h.z);
        Vector3<float> b(a.x / h.x, a.y / h.y, a.z / h.z);
        float k0 = a.length(), k1 = b.length();
        return k1 > 0 ? k0 * (k0 - 1) / k1 : -std::min(h.x, std::min(h.y, h.z));
    }
    case SDF_BOX:
        return BoxDistance(p, h, e.R);
    case SDF_CYLINDER: {
        float dx = Length2(p.x, p.y) - h.x + e.R, dy = std::abs(p.z) - h.y + e.R;
        return std::min(std::max(dx, dy), 0.0f) + Length2(std::max(dx, 0.0f), std::max(dy, 0.0f)) - e.R;
    }
    case SDF_TORUS:
        return Length2(Length2(p.x, p.y) - h.x, p.z) - h.y;
    case SDF_CAPPED_TORUS: {
        float x = std::abs(p.x);
        float k = e.cosHalf * x > e.sinHalf * p.y ? x * e.sinHalf + p.y * e.cosHalf : Length2(x, p.y);
        float d2 = x * x + p.y * p.y + p.z * p.z + h.x * (h.x - 2 * k);
        return std::sqrt(std::max(d2, 0.0f)) - h.y;
    }
    case SDF_CHAINLINK: {
        float qx = std::max(std::abs(p.x) - h.z, 0.0f);
        return Length2(Length2(qx, p.y) - h.x, p.z) - h.y;
    }
    case SDF_CAPSULE: {
        float cx = Clamp(p.x, -h.y, h.y);
        return Vector3<float>(p.x - cx, p.y, p.z).length() - h.x;
    }
    case SDF_BICAPSULE: {
        float dr = h.y - h.x, len = h.z;
        float denominator = std::max(4 * len * len - dr * dr, 1e-12f);
        float H = dr * std::sqrt((p.y * p.y + p.z * p.z) / denominator);
        H = Clamp(p.x + H, -len, len);
        float t = len > 0 ? H / (2 * len) + 0.5f : 0.5f;
        return Vector3<float>(p.x - H, p.y, p.z).length() - Mix(h.x, h.y, t);
    }
    default:
        return 1e3f;
    }
}

float SDFEvaluator::opBlend(int op, float f, float r, float a)
{
    switch (op) {
    case 0:
        return std::min(r, a);
    case 1: {
        float h = Clamp(0.5f + 0.5f * (a - r) / f, 0, 1);
        return Mix(a, r, h) - f * h * (1 - h);
    }
    case 2: {
        float h = Clamp(0.5f + 0.5f * (a - r) / f, 0, 1);
        return std::min(a, r) - f * std::min(h, 1 - h);
    }
    case 3:
    case 4:
    case 5:
        return opBlend(op + 3, f, r, -a);
    case 6:
        return std::max(r, a);
    case 7: {
        float h = Clamp(0.5f - 0.5f * (a - r) / f, 0, 1);
        return Mix(a, r, h) + f * h * (1 - h);
    }
    case 8: {
        float h = Clamp(0.5f - 0.5f * (a - r) / f, 0, 1);
        return std::max(a, r) + f * std::min(h, 1 - h);
    }
    case 12:
    case 13:
    case 14:
        return r - f * std::max(-a, 0.0f);
    case 15:
    case 16:
    case 17:
        return r + f * std::max(-a, 0.0f);
    default: // Paint and unknown numbers leave the distance
        return r;
    }
}

float SDFEvaluator::applyJoint(int joint, float r, float a, float joint0, float joint1)
{
    switch (joint) {
    case SDF_JOINT_ROUND:
        return Length2(r, a) - joint0;
    case SDF_JOINT_QUAD:
        return std::max(std::abs(r) - joint1, std::abs(a) - joint0);
    case SDF_JOINT_RHOMB:
        return std::abs(r) + std::abs(a) - joint0;
    default:
        return a;
    }
}

float SDFEvaluator::entryDistance(int i, Vector3<float> const& p) const
{
    Entry const& e = entries[i];
    float const* m = e.m;
    Vector3<float> q(p.x * m[0] + p.y * m[3] + p.z * m[6] + m[9], p.x * m[1] + p.y * m[4] + p.z * m[7] + m[10],
                     p.x * m[2] + p.y * m[5] + p.z * m[8] + m[11]);
    if (e.arrayType == SDF_ARRAY_LINEAR) {
        for (int k = 0; k < 3; ++k)
            q[k] = Repeat(q[k], e.step[k], e.counts[k]);
    } else if (e.arrayType != 0) {
        int a = e.arrayType == SDF_ARRAY_X ? 1 : e.arrayType == SDF_ARRAY_Y ? 2 : 0;
        int b = (a + 1) % 3;
        float x = q[a], y = q[b];
        float angle = std::atan2(y, x);
        if (angle < 0)
            angle += 2 * PI;
        if (angle < e.angleLimit && e.angleStep != 0) {
            angle = e.angleStep * Clamp(std::round(angle / e.angleStep), 0, float(e.rotCount - 1));
            float c = std::cos(angle), s = std::sin(angle);
            q[a] = x * c + y * s;
            q[b] = -x * s + y * c;
        }
        q[a] -= e.radius;
    }
    float r = shapeDistance(e, q);
    if (e.clip && !e.clipOnShell)
        r = std::max(r, BoxDistance(q - e.clipCenter, e.clipHalf, 0));
    switch (e.shell) {
    case SDF_SHELL_INNER:
        r = std::abs(r + e.thickness) - e.thickness;
        break;
    case SDF_SHELL_OUTER:
        r = std::abs(r - e.thickness) - e.thickness;
        break;
    case SDF_SHELL_SYMMETRIC:
        r = std::abs(r) - e.thickness;
        break;
    default:
        break;
    }
    if (e.clip && e.clipOnShell)
        r = std::max(r, BoxDistance(q - e.clipCenter, e.clipHalf, 0));
    return r * e.scale;
}

// A joint turns the boundary into a pipe; under intersection the pipe is the result.
float SDFEvaluator::combine(int i, float r, float a) const
{
    Entry const& e = entries[i];
    if (e.joint != SDF_JOINT_NONE) {
        a = applyJoint(e.joint, r, a, e.joint0, e.joint1);
        if (e.opClass == SDF_INT)
            return a;
    }
    return opBlend(e.op, e.falloff, r, a);
}

float SDFEvaluator::distance(Vector3<float> const& p) const
{
    float d = 1e3f;
    Fold(
        entries, [&](int i) { return entryDistance(i, p); }, [&](int i, float r, float a) { return combine(i, r, a); },
        [&](int i) { return entries[i].opClass == SDF_PAINT; }, d);
    return d;
}

float SDFEvaluator::distanceWorld(Vector3<double> const& p) const
{
    return distance(Vector3<float>(p * base));
}

} // namespace vel
