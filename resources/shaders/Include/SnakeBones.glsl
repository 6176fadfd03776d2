// The bending step shared by the snake vertex stages of every element kind (mesh, clay):
// bone reads and the blend of two neighbouring frames by the position along the axis.
// LINEAR_INTERPOLATION (kept disabled) would blend the matrices instead of the points.
uniform mat4x3 ItemMatrix[2];
uniform mat3 ItemNormalMatrix[2];
uniform sampler2D BonesMatrices;
uniform int BonesMax;
uniform int Closed;
uniform float InstancesMul;

mat4x3 SnakeBone(int i)
{
    int width = textureSize(BonesMatrices, 0).x;
    int t = 4 * i;
    vec3 c0 = texelFetch(BonesMatrices, ivec2(t % width, t / width), 0).xyz;
    vec3 c1 = texelFetch(BonesMatrices, ivec2((t + 1) % width, (t + 1) / width), 0).xyz;
    vec3 c2 = texelFetch(BonesMatrices, ivec2((t + 2) % width, (t + 2) / width), 0).xyz;
    vec3 c3 = texelFetch(BonesMatrices, ivec2((t + 3) % width, (t + 3) / width), 0).xyz;
    return mat4x3(c0, c1, c2, c3);
}

vec3 SnakeSkin(vec3 p, float u, mat4x3 b)
{
    // The cross-section scales with the stretch along the axis.
    return b * vec4(p.xy * InstancesMul, u, 1.0);
}

// p in item units after ItemMatrix; returns the bent point and bends n in place.
vec3 SnakeBend(vec3 p, inout vec3 n, int instance, bool closed)
{
    p.z += 0.5 + float(instance);
    p.z *= InstancesMul;
    float k = floor(p.z);
    int k0, k1;
    float u;
    if (closed) {
        k0 = int(mod(k, float(BonesMax)));
        k1 = int(mod(float(k0 + 1), float(BonesMax)));
        u = p.z - k;
    } else {
        k0 = int(clamp(k, 0.0, float(BonesMax)));
        k1 = int(clamp(k + 1.0, 0.0, float(BonesMax)));
        u = p.z - float(k0);
    }
    mat4x3 b0 = SnakeBone(k0);
    if (k0 != k1) {
        mat4x3 b1 = SnakeBone(k1);
#ifdef LINEAR_INTERPOLATION
        mat4x3 b = b0 * (1.0 - u) + b1 * u;
        n = mat3(b) * n;
        return b * vec4(p.xy * InstancesMul, u, 1.0);
#else
        n = mix(mat3(b0) * n, mat3(b1) * n, u);
        return mix(SnakeSkin(p, u, b0), SnakeSkin(p, u - 1.0, b1), u);
#endif
    }
    n = mat3(b0) * n;
    return SnakeSkin(p, u, b0);
}
