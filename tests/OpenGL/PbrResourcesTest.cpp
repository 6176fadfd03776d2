// The generated image-based-light resources: the split-sum table against an independent
// quadrature of the same BRDF, its physical trends, and the checked-in files against what the
// generator makes now.
#include "OpenGL/PbrResources.h"

#include "OpenGL/Resources.h"

#include <stb_image.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>

#include <cmath>

namespace vel {
namespace {

double const kPi = 3.14159265358979323846;

// scale and bias by brute-force midpoint quadrature over the light direction's hemisphere:
// the integrand is the GGX specular BRDF (Smith-Schlick geometry, k = alpha / 2) times NoL,
// with the Fresnel term split as (1 - Fc) and Fc, Fc = (1 - VoH)^5.
Vector2<double> Quadrature(double NoV, double roughness)
{
    double const alpha = roughness * roughness, k = alpha / 2;
    double const vx = std::sqrt(1 - NoV * NoV), vz = NoV;
    int const nTheta = 600, nPhi = 600;
    double scale = 0, bias = 0;
    for (int i = 0; i < nTheta; ++i) {
        double theta = (i + 0.5) * (kPi / 2) / nTheta;
        double lz = std::cos(theta), s = std::sin(theta);
        for (int j = 0; j < nPhi; ++j) {
            double phi = (j + 0.5) * 2 * kPi / nPhi;
            double lx = s * std::cos(phi), ly = s * std::sin(phi);
            double hx = lx + vx, hy = ly, hz = lz + vz;
            double hl = std::sqrt(hx * hx + hy * hy + hz * hz);
            double NoH = hz / hl, VoH = (vx * hx + vz * hz) / hl;
            double d = NoH * NoH * (alpha * alpha - 1) + 1;
            double D = alpha * alpha / (kPi * d * d);
            double G = NoV / (NoV * (1 - k) + k) * lz / (lz * (1 - k) + k);
            double f = D * G / (4 * NoV * lz) * lz * s * (kPi / 2 / nTheta) * (2 * kPi / nPhi);
            double fc = std::pow(1 - VoH, 5);
            scale += (1 - fc) * f;
            bias += fc * f;
        }
    }
    return {scale, bias};
}

TEST(PbrResources, SplitSumMatchesAnIndependentQuadrature)
{
    struct Case {
        double NoV, roughness;
    };
    Case const cases[] = {{0.5, 0.5}, {0.9, 0.7}, {0.3, 0.9}, {0.7, 0.45}, {0.15, 0.6}};
    for (Case const& c : cases) {
        Vector2<double> sampled = SplitSumBrdf(c.NoV, c.roughness, 4096);
        Vector2<double> reference = Quadrature(c.NoV, c.roughness);
        EXPECT_NEAR(sampled.x, reference.x, 0.01) << c.NoV << " " << c.roughness;
        EXPECT_NEAR(sampled.y, reference.y, 0.01) << c.NoV << " " << c.roughness;
    }
    // A mirror seen head-on reflects everything, and Fresnel adds nothing at normal incidence.
    Vector2<double> mirror = SplitSumBrdf(1.0, 0.01, 1024);
    EXPECT_NEAR(mirror.x + mirror.y, 1.0, 0.01);
    EXPECT_NEAR(mirror.y, 0.0, 1e-6);
}

QImage Resource(char const* path)
{
    InitResources();
    return QImage(path).convertToFormat(QImage::Format_RGB888);
}

TEST(PbrResources, TheTableFollowsThePhysicalTrends)
{
    QImage lut = Resource(":/PBR/ibl_brdf_lut.png");
    ASSERT_FALSE(lut.isNull());
    int const n = lut.width();
    auto at = [&](int x, int roughnessRow, int channel) { // roughnessRow 0 is the smoothest
        return int(lut.constScanLine(n - 1 - roughnessRow)[3 * x + channel]);
    };
    for (int x = 8; x < n; x += 16) {
        // Rougher surfaces lose more to shadowing: scale + bias falls with roughness.
        EXPECT_GT(at(x, n / 8, 0) + at(x, n / 8, 1), at(x, n - 1, 0) + at(x, n - 1, 1) + 10) << x;
    }
    for (int row = 8; row < n; row += 16) {
        // Fresnel grows towards grazing views: the bias is largest at the left.
        EXPECT_GT(at(0, row, 1), at(n - 1, row, 1)) << row;
    }
}

TEST(PbrResources, CheckedInFilesAreWhatTheGeneratorMakes)
{
    struct Image {
        char const* path;
        QImage made;
        int tolerance;
    };
    Image const images[] = {{":/PBR/ibl_brdf_lut.png", BrdfLutImage(), 1},
                            {":/Materials/MatCaps/RedClay.png", RedClayMatCap(), 0}};
    for (Image const& image : images) {
        SCOPED_TRACE(image.path);
        QImage file = Resource(image.path);
        ASSERT_EQ(file.size(), image.made.size());
        int worst = 0;
        for (int y = 0; y < file.height(); ++y)
            for (int x = 0; x < 3 * file.width(); ++x)
                worst = std::max(worst, std::abs(int(file.constScanLine(y)[x]) - int(image.made.constScanLine(y)[x])));
        EXPECT_LE(worst, image.tolerance);
    }

    QFile hdr(":/PBR/Newport_Loft_Ref.hdr");
    ASSERT_TRUE(hdr.open(QIODevice::ReadOnly));
    QByteArray bytes = hdr.readAll();
    int w = 0, h = 0, channels = 0;
    stbi_set_flip_vertically_on_load(0);
    float* pixels = stbi_loadf_from_memory(reinterpret_cast<stbi_uc const*>(bytes.constData()), bytes.size(), &w, &h,
                                           &channels, 3);
    ASSERT_NE(pixels, nullptr);
    std::vector<float> made = StudioPanorama(w, h);
    float brightest = 0, worst = 0;
    for (size_t i = 0; i < made.size(); i += 3) {
        float top = std::max({made[i], made[i + 1], made[i + 2]});
        brightest = std::max(brightest, top);
        for (size_t c = 0; c < 3; ++c) // RGBE keeps 8 bits below the largest channel
            worst = std::max(worst, std::abs(pixels[i + c] - made[i + c]) / (top + 1e-6f));
    }
    EXPECT_LT(worst, 0.01f);
    stbi_image_free(pixels);
    EXPECT_EQ(w, 2 * h);
    EXPECT_GT(brightest, 10.0f); // a sun, far above 1
}

} // namespace
} // namespace vel
