// Noise: simplex noise in two and three dimensions on the published permutation table `p`
// and gradient set `grad3`, fractal noise built on it, and random Fourier profiles.
#pragma once

#include <vector>

namespace vel {

class Noise {
public:
    static const int p[512];          // the published 256-entry permutation, repeated
    static const int grad3[12][3];    // the twelve edge directions of a cube
    static int perm[512];             // filled by init()
    static int permMod12[512];        // perm modulo 12, filled by init()

    // Fills perm and permMod12; runs once, later calls do nothing.
    static void init();

    // Simplex noise in about -1 .. 1.
    static float noise(float x, float y);
    static float noise(float x, float y, float z);

    // Fractal noise: octave i samples at frequency lacunarity^i and amplitude gain^i, each
    // octave shifted by table entries of seed + i so that octaves do not line up.
    static float noise2(float x, float y, int seed, float lacunarity, float gain, int octaves);

    // Fills v with a sum of `terms` cosines: term k has k whole waves over v's length,
    // amplitude 1.5^-k and a random phase from rand().
    static void fourier1(std::vector<float>& v, int terms);

private:
    static bool initialised;
};

} // namespace vel
