#include "Math/Noise.h"

#include <cmath>
#include <cstdlib>

namespace vel {

// clang-format off
#define VEL_NOISE_P 151,160,137,91,90,15,131,13,201,95,96,53,194,233,7,225,140,36,103,30,69,142,8,99,37,240,21,10,23, \
    190,6,148,247,120,234,75,0,26,197,62,94,252,219,203,117,35,11,32,57,177,33,88,237,149,56,87,174,20,125,136,171,168, \
    68,175,74,165,71,134,139,48,27,166,77,146,158,231,83,111,229,122,60,211,133,230,220,105,92,41,55,46,245,40,244, \
    102,143,54,65,25,63,161,1,216,80,73,209,76,132,187,208,89,18,169,200,196,135,130,116,188,159,86,164,100,109,198, \
    173,186,3,64,52,217,226,250,124,123,5,202,38,147,118,126,255,82,85,212,207,206,59,227,47,16,58,17,182,189,28,42, \
    223,183,170,213,119,248,152,2,44,154,163,70,221,153,101,155,167,43,172,9,129,22,39,253,19,98,108,110,79,113,224, \
    232,178,185,112,104,218,246,97,228,251,34,242,193,238,210,144,12,191,179,162,241,81,51,145,235,249,14,239,107,49, \
    192,214,31,181,199,106,157,184,84,204,176,115,121,50,45,127,4,150,254,138,236,205,93,222,114,67,29,24,72,243,141, \
    128,195,78,66,215,61,156,180
const int Noise::p[512] = {VEL_NOISE_P, VEL_NOISE_P};
#undef VEL_NOISE_P

const int Noise::grad3[12][3] = {{1,1,0},{-1,1,0},{1,-1,0},{-1,-1,0},{1,0,1},{-1,0,1},{1,0,-1},{-1,0,-1},
                                 {0,1,1},{0,-1,1},{0,1,-1},{0,-1,-1}};
// clang-format on

int Noise::perm[512];
int Noise::permMod12[512];
bool Noise::initialised = false;

namespace {

int FastFloor(float x)
{
    int i = int(x);
    return x < float(i) ? i - 1 : i;
}

float Dot(int const* g, float x, float y)
{
    return float(g[0]) * x + float(g[1]) * y;
}

float Dot(int const* g, float x, float y, float z)
{
    return float(g[0]) * x + float(g[1]) * y + float(g[2]) * z;
}

// The falloff of one simplex corner: (r^2 - d^2)^4 times the gradient's projection.
float Corner2(float x, float y, int gi)
{
    float t = 0.5f - x * x - y * y;
    if (t < 0)
        return 0;
    t *= t;
    return t * t * Dot(Noise::grad3[gi], x, y);
}

float Corner3(float x, float y, float z, int gi)
{
    float t = 0.6f - x * x - y * y - z * z;
    if (t < 0)
        return 0;
    t *= t;
    return t * t * Dot(Noise::grad3[gi], x, y, z);
}

} // namespace

void Noise::init()
{
    if (initialised)
        return;
    for (int i = 0; i < 512; ++i) {
        perm[i] = p[i & 255];
        permMod12[i] = perm[i] % 12;
    }
    initialised = true;
}

float Noise::noise(float xin, float yin)
{
    init();
    const float F2 = 0.5f * (std::sqrt(3.0f) - 1.0f);
    const float G2 = (3.0f - std::sqrt(3.0f)) / 6.0f;
    // Skew to find the simplex cell, then unskew to get the first corner's offset.
    float s = (xin + yin) * F2;
    int i = FastFloor(xin + s);
    int j = FastFloor(yin + s);
    float t = float(i + j) * G2;
    float x0 = xin - (float(i) - t);
    float y0 = yin - (float(j) - t);
    int i1 = x0 > y0 ? 1 : 0;
    int j1 = 1 - i1;
    float x1 = x0 - float(i1) + G2, y1 = y0 - float(j1) + G2;
    float x2 = x0 - 1.0f + 2.0f * G2, y2 = y0 - 1.0f + 2.0f * G2;
    int ii = i & 255, jj = j & 255;
    float n = Corner2(x0, y0, permMod12[ii + perm[jj]]) + Corner2(x1, y1, permMod12[ii + i1 + perm[jj + j1]]) +
              Corner2(x2, y2, permMod12[ii + 1 + perm[jj + 1]]);
    return 70.0f * n;
}

float Noise::noise(float xin, float yin, float zin)
{
    init();
    const float F3 = 1.0f / 3.0f;
    const float G3 = 1.0f / 6.0f;
    float s = (xin + yin + zin) * F3;
    int i = FastFloor(xin + s), j = FastFloor(yin + s), k = FastFloor(zin + s);
    float t = float(i + j + k) * G3;
    float x0 = xin - (float(i) - t), y0 = yin - (float(j) - t), z0 = zin - (float(k) - t);
    // Which of the six tetrahedra of the skewed cube holds the point.
    int i1, j1, k1, i2, j2, k2;
    if (x0 >= y0) {
        if (y0 >= z0) {
            i1 = 1, j1 = 0, k1 = 0, i2 = 1, j2 = 1, k2 = 0;
        } else if (x0 >= z0) {
            i1 = 1, j1 = 0, k1 = 0, i2 = 1, j2 = 0, k2 = 1;
        } else {
            i1 = 0, j1 = 0, k1 = 1, i2 = 1, j2 = 0, k2 = 1;
        }
    } else {
        if (y0 < z0) {
            i1 = 0, j1 = 0, k1 = 1, i2 = 0, j2 = 1, k2 = 1;
        } else if (x0 < z0) {
            i1 = 0, j1 = 1, k1 = 0, i2 = 0, j2 = 1, k2 = 1;
        } else {
            i1 = 0, j1 = 1, k1 = 0, i2 = 1, j2 = 1, k2 = 0;
        }
    }
    float x1 = x0 - float(i1) + G3, y1 = y0 - float(j1) + G3, z1 = z0 - float(k1) + G3;
    float x2 = x0 - float(i2) + 2 * G3, y2 = y0 - float(j2) + 2 * G3, z2 = z0 - float(k2) + 2 * G3;
    float x3 = x0 - 1 + 3 * G3, y3 = y0 - 1 + 3 * G3, z3 = z0 - 1 + 3 * G3;
    int ii = i & 255, jj = j & 255, kk = k & 255;
    float n = Corner3(x0, y0, z0, permMod12[ii + perm[jj + perm[kk]]]) +
              Corner3(x1, y1, z1, permMod12[ii + i1 + perm[jj + j1 + perm[kk + k1]]]) +
              Corner3(x2, y2, z2, permMod12[ii + i2 + perm[jj + j2 + perm[kk + k2]]]) +
              Corner3(x3, y3, z3, permMod12[ii + 1 + perm[jj + 1 + perm[kk + 1]]]);
    return 32.0f * n;
}

float Noise::noise2(float x, float y, int seed, float lacunarity, float gain, int octaves)
{
    float sum = 0, amplitude = 1, frequency = 1;
    for (int i = 0; i < octaves; ++i) {
        float ox = float(p[(seed + i) & 255]);
        float oy = float(p[(octaves + seed + i) & 255]);
        sum += amplitude * noise(x * frequency + ox, y * frequency + oy);
        amplitude *= gain;
        frequency *= lacunarity;
    }
    return sum;
}

void Noise::fourier1(std::vector<float>& v, int terms)
{
    const double twoPi = 6.283185307179586;
    size_t n = v.size();
    for (float& value : v)
        value = 0;
    if (n == 0)
        return;
    for (int k = 1; k <= terms; ++k) {
        double amplitude = std::pow(1.5, -k);
        double phase = twoPi * double(std::rand()) / double(RAND_MAX);
        for (size_t i = 0; i < n; ++i)
            v[i] += float(amplitude * std::cos(twoPi * double(k) * double(i) / double(n) + phase));
    }
}

} // namespace vel
