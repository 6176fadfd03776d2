// hg_sdf: signed distance primitives, domain operators and blends for SDF modelling.
//
// Index
// - primitives: f* (point p in the primitive's own frame; negative inside)
// - domain operators: p* (change the point in place; return the cell index where there is one)
// - combinations: fOp* (of two distances a and b; r is the blend size)
//
// Conventions: axes of symmetry run along y unless the name says otherwise; sizes are
// half-extents. Distances are exact where the comment does not say "bound": a bound never
// overestimates, so a ray marcher may step by it.
#ifndef VEL_HG_SDF
#define VEL_HG_SDF

#define SDF_SQRT_HALF 0.70710678118654752440
#define SDF_TAU 6.28318530717958647692

float sdfMax3(vec3 v) { return max(v.x, max(v.y, v.z)); }
float sdfSign(float x) { return x < 0.0 ? -1.0 : 1.0; }

// ------------------------------------------------------------------------------------------
// Primitives
// ------------------------------------------------------------------------------------------

float fSphere(vec3 p, float radius)
{
    return length(p) - radius;
}

// The plane through the origin shifted by `offset` along its unit normal `n`.
float fPlane(vec3 p, vec3 n, float offset)
{
    return dot(p, n) - offset;
}

// Box of half-extents `b`.
float fBox(vec3 p, vec3 b)
{
    vec3 q = abs(p) - b;
    return length(max(q, vec3(0.0))) + min(sdfMax3(q), 0.0);
}

// Box of half-extents `b` whose edges are rounded by `radius` (the box keeps its extents).
float fBoxRounded(vec3 p, vec3 b, float radius)
{
    return fBox(p, b - vec3(radius)) - radius;
}

// Rectangle in the plane.
float fBox2(vec2 p, vec2 b)
{
    vec2 q = abs(p) - b;
    return length(max(q, vec2(0.0))) + min(max(q.x, q.y), 0.0);
}

// Cylinder around y of `radius`, from -halfHeight to +halfHeight.
float fCylinder(vec3 p, float radius, float halfHeight)
{
    return fBox2(vec2(length(p.xz), p.y), vec2(radius, halfHeight));
}

// Cylinder whose rim is rounded by `round` (outer extents kept).
float fCylinderRounded(vec3 p, float radius, float halfHeight, float round)
{
    return fBox2(vec2(length(p.xz), p.y), vec2(radius, halfHeight) - vec2(round)) - round;
}

// Capsule around y: a segment from -halfLength to +halfLength, thickened by `radius`.
float fCapsule(vec3 p, float radius, float halfLength)
{
    vec3 q = vec3(p.x, p.y - clamp(p.y, -halfLength, halfLength), p.z);
    return length(q) - radius;
}

// Capsule between two points.
float fCapsule(vec3 p, vec3 a, vec3 b, float radius)
{
    vec3 ab = b - a;
    float t = clamp(dot(p - a, ab) / max(dot(ab, ab), 1e-12), 0.0, 1.0);
    return length(p - a - t * ab) - radius;
}

// Torus in the xz plane: ring of `ringRadius`, tube of `tubeRadius`.
float fTorus(vec3 p, float ringRadius, float tubeRadius)
{
    return length(vec2(length(p.xz) - ringRadius, p.y)) - tubeRadius;
}

// Distance from q to the segment a-b in the plane.
float sdfSegment2(vec2 q, vec2 a, vec2 b)
{
    vec2 ab = b - a;
    float t = clamp(dot(q - a, ab) / max(dot(ab, ab), 1e-12), 0.0, 1.0);
    return length(q - a - t * ab);
}

// Cone around y: base disc of `radius` at y = 0, apex at y = `height`.
float fCone(vec3 p, float radius, float height)
{
    // In the half-plane (distance from the axis, height) the cone is the triangle
    // (0, 0), (radius, 0), (0, height): the distance to its two outer edges, signed by
    // whether q is inside the triangle.
    vec2 q = vec2(length(p.xz), p.y);
    float d = min(sdfSegment2(q, vec2(0.0), vec2(radius, 0.0)),
                  sdfSegment2(q, vec2(radius, 0.0), vec2(0.0, height)));
    bool inside = q.y > 0.0 && q.x * height + q.y * radius < radius * height;
    return inside ? -d : d;
}

// Ellipsoid of half-axes `r`. A bound, exact on the axes.
float fEllipsoid(vec3 p, vec3 r)
{
    float k0 = length(p / r);
    float k1 = length(p / (r * r));
    return k0 < 1e-12 ? -min(r.x, min(r.y, r.z)) : k0 * (k0 - 1.0) / k1;
}

// ------------------------------------------------------------------------------------------
// Domain operators
// ------------------------------------------------------------------------------------------

// Rotates the plane point p by `angle` radians, counter-clockwise.
void pR(inout vec2 p, float angle)
{
    p = cos(angle) * p + sin(angle) * vec2(-p.y, p.x);
}

// Repeats space along one axis every `size`; returns the cell index (cell 0 around 0).
float pMod1(inout float p, float size)
{
    float cell = floor(p / size + 0.5);
    p -= cell * size;
    return cell;
}

vec2 pMod2(inout vec2 p, vec2 size)
{
    vec2 cell = floor(p / size + 0.5);
    p -= cell * size;
    return cell;
}

vec3 pMod3(inout vec3 p, vec3 size)
{
    vec3 cell = floor(p / size + 0.5);
    p -= cell * size;
    return cell;
}

// Repeats only the cells first..last; space beyond them belongs to the end cells.
float pModInterval1(inout float p, float size, float first, float last)
{
    float cell = clamp(floor(p / size + 0.5), first, last);
    p -= cell * size;
    return cell;
}

// Repeats the plane `count` times around the origin; the cell around +x is 0.
float pModPolar(inout vec2 p, float count)
{
    float sector = SDF_TAU / count;
    float angle = atan(p.y, p.x);
    float cell = floor(angle / sector + 0.5);
    pR(p, -cell * sector);
    return cell < 0.0 ? cell + count : cell;
}

// Folds space at `offset` on one axis: the mirror image of the positive side; returns the side.
float pMirror(inout float p, float offset)
{
    float side = sdfSign(p);
    p = abs(p) - offset;
    return side;
}

// Mirrors the side behind the plane (unit normal n, at `offset`) onto its front.
float pReflect(inout vec3 p, vec3 n, float offset)
{
    float d = dot(p, n) - offset;
    if (d < 0.0)
        p -= 2.0 * d * n;
    return sdfSign(d);
}

// ------------------------------------------------------------------------------------------
// Combinations. Seen in the plane (a, b), a union is the region a < 0 or b < 0; a blend of
// size r reshapes its corner at the origin within r of both surfaces. Intersections are
// unions of the complements, differences intersections with the complement of b.
// ------------------------------------------------------------------------------------------

float fOpUnion(float a, float b) { return min(a, b); }
float fOpIntersection(float a, float b) { return max(a, b); }
float fOpDifference(float a, float b) { return max(a, -b); }

// Fillet: the corner is replaced by a quarter circle of radius r centred at (r, r).
float fOpUnionRound(float a, float b, float r)
{
    vec2 toCentre = max(vec2(r - a, r - b), vec2(0.0));
    return max(r, min(a, b)) - length(toCentre);
}

float fOpIntersectionRound(float a, float b, float r)
{
    return -fOpUnionRound(-a, -b, r);
}

float fOpDifferenceRound(float a, float b, float r)
{
    return fOpIntersectionRound(a, -b, r);
}

// Chamfer: the corner is cut by the 45 degree line a + b = r.
float fOpUnionChamfer(float a, float b, float r)
{
    return min(min(a, b), (a + b - r) * SDF_SQRT_HALF);
}

float fOpIntersectionChamfer(float a, float b, float r)
{
    return max(max(a, b), (a + b + r) * SDF_SQRT_HALF);
}

float fOpDifferenceChamfer(float a, float b, float r)
{
    return fOpIntersectionChamfer(a, -b, r);
}

// Stairs: the corner is filled by `steps` square steps climbing from (0, r) to (r, 0); step
// k is the quadrant a < (k + 1) r / steps, b < r - k r / steps.
float fOpUnionStairs(float a, float b, float r, float steps)
{
    float d = min(a, b);
    int n = int(max(steps, 1.0));
    float s = r / float(n);
    for (int k = 0; k < n; ++k) {
        vec2 q = vec2(a - float(k + 1) * s, b - (r - float(k) * s));
        d = min(d, length(max(q, vec2(0.0))) + min(max(q.x, q.y), 0.0));
    }
    return d;
}

float fOpIntersectionStairs(float a, float b, float r, float steps)
{
    return -fOpUnionStairs(-a, -b, r, steps);
}

float fOpDifferenceStairs(float a, float b, float r, float steps)
{
    return fOpIntersectionStairs(a, -b, r, steps);
}

// Soft union: a polynomial smooth minimum, r wide. A bound.
float fOpUnionSoft(float a, float b, float r)
{
    float h = clamp(0.5 + 0.5 * (b - a) / r, 0.0, 1.0);
    return mix(b, a, h) - r * h * (1.0 - h);
}

// A shell of `thickness` around the surface.
float fOpShell(float d, float thickness)
{
    return abs(d) - 0.5 * thickness;
}

#endif
