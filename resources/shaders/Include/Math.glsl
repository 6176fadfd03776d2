// Math: constants and small helpers shared by built-in and user shaders.
//
// Matrices reach GLSL untransposed from the row-major C++ side, so `M * v` applies a
// transform; the rotations below follow the same rule (column-vector form).
#ifndef VEL_MATH
#define VEL_MATH

#define PI      3.14159265358979323846
#define TAU     6.28318530717958647692
#define HALF_PI 1.57079632679489661923
#define INV_PI  0.31830988618379067154

float saturate(float x) { return clamp(x, 0.0, 1.0); }
vec2 saturate(vec2 x) { return clamp(x, 0.0, 1.0); }
vec3 saturate(vec3 x) { return clamp(x, 0.0, 1.0); }
vec4 saturate(vec4 x) { return clamp(x, 0.0, 1.0); }

float sqr(float x) { return x * x; }
float max3(vec3 v) { return max(v.x, max(v.y, v.z)); }
float min3(vec3 v) { return min(v.x, min(v.y, v.z)); }
float max2(vec2 v) { return max(v.x, v.y); }
float min2(vec2 v) { return min(v.x, v.y); }

// x mapped from [a0, a1] to [b0, b1], not clamped.
float remap(float x, float a0, float a1, float b0, float b1)
{
    return b0 + (x - a0) * (b1 - b0) / (a1 - a0);
}

// 0 below `edge0`, 1 above `edge1`, linear between.
float linearstep(float edge0, float edge1, float x)
{
    return saturate((x - edge0) / (edge1 - edge0));
}

// Rotation by `angle` radians in the plane, counter-clockwise.
mat2 rotation2(float angle)
{
    float c = cos(angle), s = sin(angle);
    return mat2(c, s, -s, c);
}

mat3 rotationX(float angle)
{
    float c = cos(angle), s = sin(angle);
    return mat3(1.0, 0.0, 0.0, 0.0, c, s, 0.0, -s, c);
}

mat3 rotationY(float angle)
{
    float c = cos(angle), s = sin(angle);
    return mat3(c, 0.0, -s, 0.0, 1.0, 0.0, s, 0.0, c);
}

mat3 rotationZ(float angle)
{
    float c = cos(angle), s = sin(angle);
    return mat3(c, s, 0.0, -s, c, 0.0, 0.0, 0.0, 1.0);
}

// Rotation by `angle` around the unit `axis` (Rodrigues).
mat3 rotationAxis(vec3 axis, float angle)
{
    float c = cos(angle), s = sin(angle), t = 1.0 - c;
    vec3 a = axis;
    return mat3(t * a.x * a.x + c,       t * a.x * a.y + s * a.z, t * a.x * a.z - s * a.y,
                t * a.x * a.y - s * a.z, t * a.y * a.y + c,       t * a.y * a.z + s * a.x,
                t * a.x * a.z + s * a.y, t * a.y * a.z - s * a.x, t * a.z * a.z + c);
}

// The shortest rotation taking the unit vector `from` to the unit vector `to`: rot(a, b) * a = b.
mat3 rot(vec3 from, vec3 to)
{
    vec3 v = cross(from, to);
    float c = dot(from, to);
    if (c < -0.999999) {
        // Opposite: half a turn around any axis normal to `from`.
        vec3 axis = normalize(abs(from.x) < 0.9 ? cross(from, vec3(1.0, 0.0, 0.0)) : cross(from, vec3(0.0, 1.0, 0.0)));
        return rotationAxis(axis, PI);
    }
    float k = 1.0 / (1.0 + c);
    return mat3(v.x * v.x * k + c,   v.x * v.y * k + v.z, v.x * v.z * k - v.y,
                v.y * v.x * k - v.z, v.y * v.y * k + c,   v.y * v.z * k + v.x,
                v.z * v.x * k + v.y, v.z * v.y * k - v.x, v.z * v.z * k + c);
}

// Rotates `v` by the unit quaternion q = (x, y, z, w).
vec3 quatRotate(vec4 q, vec3 v)
{
    vec3 t = 2.0 * cross(q.xyz, v);
    return v + q.w * t + cross(q.xyz, t);
}

// Integer hashes to [0, 1): cheap, stateless, the same on every driver.
uint hashUint(uint x)
{
    x ^= x >> 16u;
    x *= 0x7FEB352Du;
    x ^= x >> 15u;
    x *= 0x846CA68Bu;
    x ^= x >> 16u;
    return x;
}

float hash11(float p)
{
    return float(hashUint(floatBitsToUint(p))) / 4294967296.0;
}

float hash21(vec2 p)
{
    uvec2 u = floatBitsToUint(p);
    return float(hashUint(u.x ^ hashUint(u.y))) / 4294967296.0;
}

vec3 hash33(vec3 p)
{
    uvec3 u = floatBitsToUint(p);
    uint h = hashUint(u.x ^ hashUint(u.y ^ hashUint(u.z)));
    return vec3(h, hashUint(h), hashUint(h + 1u)) / 4294967296.0;
}

#endif
