#include "OpenGL/PbrResources.h"

#include "Core/Communicate.h"
#include "Math/Vector3.h"

#include <stb_image_write.h>

#include <QDir>
#include <QString>

#include <algorithm>
#include <cmath>

namespace vel {

namespace {

double const kPi = 3.14159265358979323846;

// The i-th of n points of the Hammersley set in the unit square.
Vector2<double> Hammersley(unsigned i, unsigned n)
{
    unsigned bits = i;
    bits = (bits << 16u) | (bits >> 16u);
    bits = ((bits & 0x55555555u) << 1u) | ((bits & 0xAAAAAAAAu) >> 1u);
    bits = ((bits & 0x33333333u) << 2u) | ((bits & 0xCCCCCCCCu) >> 2u);
    bits = ((bits & 0x0F0F0F0Fu) << 4u) | ((bits & 0xF0F0F0F0u) >> 4u);
    bits = ((bits & 0x00FF00FFu) << 8u) | ((bits & 0xFF00FF00u) >> 8u);
    return {double(i) / double(n), double(bits) * 2.3283064365386963e-10};
}

double SmithSchlick(double NoV, double NoL, double alpha)
{
    double k = alpha / 2;
    return NoV / (NoV * (1 - k) + k) * (NoL / (NoL * (1 - k) + k));
}

double Smooth(double edge0, double edge1, double x)
{
    double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

unsigned char Byte(double v)
{
    return static_cast<unsigned char>(std::lround(std::clamp(v, 0.0, 1.0) * 255));
}

} // namespace

// ---- split-sum table

Vector2<double> SplitSumBrdf(double NoV, double roughness, int samples)
{
    double const alpha = roughness * roughness;
    Vector3<double> const V(std::sqrt(std::max(0.0, 1 - NoV * NoV)), 0, NoV);
    double scale = 0, bias = 0;
    for (int i = 0; i < samples; ++i) {
        // A half vector drawn by the GGX distribution around the normal (0, 0, 1).
        Vector2<double> xi = Hammersley(unsigned(i), unsigned(samples));
        double phi = 2 * kPi * xi.x;
        double cosTheta = std::sqrt((1 - xi.y) / (1 + (alpha * alpha - 1) * xi.y));
        double sinTheta = std::sqrt(std::max(0.0, 1 - cosTheta * cosTheta));
        Vector3<double> H(sinTheta * std::cos(phi), sinTheta * std::sin(phi), cosTheta);
        double VoH = V.dot(H);
        Vector3<double> L = H * (2 * VoH) - V;
        double NoL = L.z, NoH = H.z;
        if (NoL <= 0 || VoH <= 0)
            continue;
        // BRDF NoL / pdf, with pdf = D NoH / (4 VoH): D cancels.
        double visibility = SmithSchlick(NoV, NoL, alpha) * VoH / (NoH * NoV);
        double fresnel = std::pow(1 - VoH, 5);
        scale += (1 - fresnel) * visibility;
        bias += fresnel * visibility;
    }
    return {scale / samples, bias / samples};
}

QImage BrdfLutImage(int size, int samples)
{
    QImage image(size, size, QImage::Format_RGB888);
    for (int y = 0; y < size; ++y) {
        double roughness = (y + 0.5) / size;
        uchar* row = image.scanLine(size - 1 - y);
        for (int x = 0; x < size; ++x) {
            Vector2<double> ab = SplitSumBrdf((x + 0.5) / size, roughness, samples);
            row[3 * x] = Byte(ab.x);
            row[3 * x + 1] = Byte(ab.y);
            row[3 * x + 2] = 0;
        }
    }
    return image;
}

// ---- studio panorama

namespace {

// The studio's radiance in a direction given by azimuth (0 along -Z, growing towards +X) and
// elevation (0 at the horizon, pi/2 straight up).
Vector3<double> Studio(double azimuth, double elevation)
{
    double const s = std::sin(elevation);
    Vector3<double> c;
    if (elevation < 0) {
        // Floor boards: warm, darker far off, with a faint grain along the azimuth.
        double grain = 0.9 + 0.1 * std::sin(40 * azimuth + 3 * std::sin(7 * elevation));
        c = Vector3<double>(0.32, 0.22, 0.14) * (grain * (0.55 + 0.45 * -s));
        // The sun through the window lies on the floor across the room.
        double patch = Smooth(0.45, 0.15, std::abs(azimuth + kPi - 0.5)) * Smooth(-0.15, -0.45, elevation) *
                       Smooth(-1.1, -0.8, elevation);
        c += Vector3<double>(1.6, 1.45, 1.2) * patch;
    } else if (elevation < 1.0) {
        c = Vector3<double>(0.55, 0.5, 0.45) * (0.7 + 0.3 * s);
    } else {
        c = Vector3<double>(0.68, 0.68, 0.7);
        // A soft box overhead.
        double box = Smooth(0.35, 0.3, std::abs(std::cos(elevation) * std::sin(azimuth))) *
                     Smooth(0.22, 0.18, std::abs(std::cos(elevation) * std::cos(azimuth)));
        c += Vector3<double>(9, 9, 8.5) * box;
    }
    // Two tall windows to the right of the view direction, with a sky behind them.
    for (double centre : {0.45, 1.25}) {
        double window = Smooth(0.3, 0.27, std::abs(azimuth - centre)) * Smooth(0.02, 0.05, elevation) *
                        Smooth(0.8, 0.77, elevation);
        Vector3<double> sky = Vector3<double>(0.9, 1.1, 1.5) + Vector3<double>(1.0, 1.3, 2.2) * s;
        c = c * (1 - window) + sky * window;
    }
    // The sun in the first window, with a glow around it.
    double angle = std::acos(std::clamp(std::cos(elevation) * std::cos(0.35) * std::cos(azimuth - 0.5) +
                                            s * std::sin(0.35),
                                        -1.0, 1.0));
    c += Vector3<double>(80, 72, 60) * Smooth(0.05, 0.035, angle) + Vector3<double>(3, 2.6, 2) * std::exp(-angle * 12);
    return c;
}

} // namespace

std::vector<float> StudioPanorama(int width, int height)
{
    std::vector<float> rgb;
    rgb.reserve(size_t(width) * size_t(height) * 3);
    for (int row = 0; row < height; ++row) {
        double elevation = kPi * (0.5 - (row + 0.5) / height);
        for (int x = 0; x < width; ++x) {
            // TextureCube's longitude runs the other way from x, and is -pi/2 on the middle column.
            double longitude = 2 * kPi * (0.25 - (x + 0.5) / width);
            Vector3<double> c = Studio(-kPi / 2 - longitude, elevation);
            rgb.insert(rgb.end(), {float(c.x), float(c.y), float(c.z)});
        }
    }
    return rgb;
}

// ---- matcap

QImage RedClayMatCap(int size)
{
    QImage image(size, size, QImage::Format_RGB888);
    Vector3<double> const albedo(0.58, 0.13, 0.07);
    Vector3<double> const key = Vector3<double>(-0.45, 0.6, 0.65).normalize();
    Vector3<double> const fill = Vector3<double>(0.7, -0.25, 0.55).normalize();
    Vector3<double> const halfway = (key + Vector3<double>(0, 0, 1)).normalize();
    for (int row = 0; row < size; ++row) {
        uchar* line = image.scanLine(row);
        for (int x = 0; x < size; ++x) {
            double u = 2 * (x + 0.5) / size - 1, v = 1 - 2 * (row + 0.5) / size;
            double r = std::sqrt(u * u + v * v);
            if (r > 0.999) { // the rim's normal, beyond the disc
                u *= 0.999 / r;
                v *= 0.999 / r;
            }
            Vector3<double> n(u, v, std::sqrt(std::max(0.0, 1 - u * u - v * v)));
            double diffuse = 0.95 * std::max(0.0, n.dot(key)) + 0.2 * std::max(0.0, n.dot(fill)) + 0.06;
            double rim = 0.2 * std::pow(1 - n.z, 3);
            double specular = 0.18 * std::pow(std::max(0.0, n.dot(halfway)), 24);
            Vector3<double> c = albedo * diffuse + Vector3<double>(0.9, 0.55, 0.45) * rim + Vector3<double>(1, 1, 1) * specular;
            for (int k = 0; k < 3; ++k)
                line[3 * x + k] = Byte(std::pow(std::clamp(k == 0 ? c.x : k == 1 ? c.y : c.z, 0.0, 1.0), 1 / 2.2));
        }
    }
    return image;
}

// ---- files

bool WritePbrResources(std::string const& folder)
{
    QDir root(QString::fromStdString(folder));
    bool ok = root.mkpath("PBR") && root.mkpath("Materials/MatCaps");
    ok = ok && BrdfLutImage().save(root.filePath("PBR/ibl_brdf_lut.png"));
    int const w = 512, h = 256;
    std::vector<float> panorama = StudioPanorama(w, h);
    std::string hdr = root.filePath("PBR/Newport_Loft_Ref.hdr").toStdString();
    ok = ok && stbi_write_hdr(hdr.c_str(), w, h, 3, panorama.data()) != 0;
    ok = ok && RedClayMatCap().save(root.filePath("Materials/MatCaps/RedClay.png"));
    if (!ok)
        LogInfo(QString("The PBR resources could not all be written under '%1'.").arg(root.path()), 2);
    return ok;
}

} // namespace vel
