// The sample scenes of shader layers that the start window offers: each an empty scene
// whose shader layers block holds the layers below, written to
// RESOURCES/scenes/ShaderLayers/<file>. The GLSL is this project's own.
#include "ShaderLayerSamples.h"

#include "OpenGL/Rendering.h"
#include "OpenGL/ShaderLayer.h"
#include "Scene/OFile.h"
#include "Scene/Scene.h"

#include <QDir>
#include <QFile>

#include <cstdio>

namespace vel {

namespace {

struct Sample {
    char const* file;
    int group;
    char const* code;
};

// ---- filters of the picture (group RunFinal)

char const* const HALFTONE = R"(// Halftone: the picture printed as dots on a grid turned by 45 degrees; the darker a
// cell, the larger its dot.
const float CELL = 7.0;

void main()
{
    float a = 0.7853982;
    mat2 turn = mat2(cos(a), sin(a), -sin(a), cos(a));
    vec2 p = turn * gl_FragCoord.xy;
    vec2 cell = (floor(p / CELL) + 0.5) * CELL;
    vec3 c = texture(iImage, (transpose(turn) * cell) / iResolution).rgb;
    float ink = 1.0 - dot(c, vec3(0.299, 0.587, 0.114));
    float radius = sqrt(clamp(ink, 0.0, 1.0)) * CELL * 0.72;
    float cover = 1.0 - smoothstep(radius - 0.8, radius + 0.8, length(p - cell));
    oColor = vec4(mix(vec3(1.0), c * 0.55, cover), 1.0);
}
)";

char const* const MANGA_DOTS = R"(// Manga dots: grey tones as black screentone dots on white paper, with dark ink lines
// where the brightness jumps.
const float CELL = 6.0;

float Grey(vec2 p)
{
    return dot(texture(iImage, p / iResolution).rgb, vec3(0.299, 0.587, 0.114));
}

void main()
{
    vec2 p = gl_FragCoord.xy;
    float g = Grey(p);
    vec2 cell = (floor(p / CELL) + 0.5) * CELL;
    float radius = sqrt(1.0 - clamp(g, 0.0, 1.0)) * CELL * 0.75;
    float dots = smoothstep(radius - 0.7, radius + 0.7, length(p - cell));
    float paper = g > 0.85 ? 1.0 : (g < 0.12 ? 0.0 : dots);
    float edge = abs(Grey(p + vec2(1, 0)) - Grey(p - vec2(1, 0))) + abs(Grey(p + vec2(0, 1)) - Grey(p - vec2(0, 1)));
    oColor = vec4(vec3(paper * (1.0 - smoothstep(0.15, 0.3, edge))), 1.0);
}
)";

char const* const MANGA_DIRECTION = R"(// Manga direction: shading by hatching; lines run along one direction, the darker the
// tone the thicker they are, and the darkest tones get a second, crossing set.
const float SPACING = 5.0;

float Lines(vec2 p, vec2 direction, float width)
{
    float d = abs(fract(dot(p, vec2(-direction.y, direction.x)) / SPACING) - 0.5) * SPACING;
    return smoothstep(width - 0.6, width + 0.6, d);
}

void main()
{
    vec2 p = gl_FragCoord.xy;
    vec3 c = texture(iImage, p / iResolution).rgb;
    float dark = 1.0 - dot(c, vec3(0.299, 0.587, 0.114));
    float paper = Lines(p, normalize(vec2(1.0, 0.35)), dark * SPACING * 0.45);
    if (dark > 0.6)
        paper *= Lines(p, normalize(vec2(-0.35, 1.0)), (dark - 0.6) * SPACING);
    oColor = vec4(vec3(paper), 1.0);
}
)";

char const* const LENS_FLARES = R"(// Lens flares: the bright parts of the picture, mirrored through the centre as a row of
// coloured ghosts, with a halo ring, added to the picture.
vec3 Bright(vec2 uv)
{
    vec3 c = texture(iImage, uv).rgb;
    return max(c - vec3(0.8), vec3(0.0)) * 4.0;
}

void main()
{
    vec2 uv = gl_FragCoord.xy / iResolution;
    vec2 towardCentre = vec2(0.5) - uv;
    vec3 flare = vec3(0.0);
    for (int i = 1; i <= 5; ++i) {
        vec2 q = fract(uv + towardCentre * 0.45 * float(i));
        float fade = pow(1.0 - length(vec2(0.5) - q) / 0.7071, 8.0);
        vec3 tint = vec3(0.6 + 0.4 * cos(float(i)), 0.6 + 0.4 * cos(float(i) + 2.1), 0.6 + 0.4 * cos(float(i) + 4.2));
        flare += Bright(q) * fade * tint;
    }
    vec2 halo = uv + normalize(towardCentre + 1e-5) * 0.35;
    flare += Bright(halo) * pow(1.0 - abs(length(towardCentre) - 0.35) / 0.35, 6.0) * 0.5;
    oColor = vec4(texture(iImage, uv).rgb + flare * 0.25, 1.0);
}
)";

char const* const TILT_SHIFT = R"(// Tilt-shift: a band across the middle stays sharp, and the blur grows above and below
// it, so that the scene looks like a miniature. Colours are lifted a little.
const float BAND = 0.12;
const float MAX_BLUR = 9.0;

void main()
{
    vec2 uv = gl_FragCoord.xy / iResolution;
    float blur = clamp((abs(uv.y - 0.5) - BAND) / (0.5 - BAND), 0.0, 1.0) * MAX_BLUR;
    vec3 sum = vec3(0.0);
    float weight = 0.0;
    for (int i = 0; i < 12; ++i) {
        float a = float(i) * 2.3999632;
        float r = sqrt((float(i) + 0.5) / 12.0) * blur;
        vec2 q = uv + vec2(cos(a), sin(a)) * r / iResolution;
        sum += texture(iImage, q).rgb;
        weight += 1.0;
    }
    vec3 c = sum / weight;
    float grey = dot(c, vec3(0.299, 0.587, 0.114));
    oColor = vec4(mix(vec3(grey), c, 1.25), 1.0);
}
)";

// ---- pictures of their own (group RunFinal, drawn over the whole view)

char const* const JULIA = R"(// Julia set: z -> z^2 + c, with c travelling round the edge of the main cardioid of the
// Mandelbrot set; the mouse pans while a button is held. Smooth colouring by escape time.
const int STEPS = 200;

vec3 Palette(float t)
{
    return 0.5 + 0.5 * cos(6.2831853 * (t + vec3(0.0, 0.15, 0.3)));
}

void main()
{
    float zoom = 1.6;
    vec2 pan = iMouse[0].z > 0.0 ? (iMouse[0].xy / iResolution - 0.5) : vec2(0.0);
    vec2 z = (gl_FragCoord.xy - 0.5 * iResolution) / iResolution.y * 2.0 * zoom - pan;
    float a = 0.2 * iTime;
    vec2 w = 0.5 * vec2(cos(a), sin(a));
    vec2 c = w - vec2(w.x * w.x - w.y * w.y, 2.0 * w.x * w.y) * 0.98;
    int i = 0;
    for (; i < STEPS && dot(z, z) < 256.0; ++i)
        z = vec2(z.x * z.x - z.y * z.y, 2.0 * z.x * z.y) + c;
    if (i == STEPS) {
        oColor = vec4(0.0, 0.0, 0.0, 1.0);
        return;
    }
    float smoothI = float(i) - log2(log2(dot(z, z))) + 4.0;
    oColor = vec4(Palette(smoothI / 40.0), 1.0);
}
)";

char const* const MANDELBROT = R"(// Mandelbrot set: c over the view, z -> z^2 + c from 0, zooming slowly into the valley
// of seahorses and back. Smooth colouring by escape time.
const int STEPS = 300;

void main()
{
    vec2 centre = vec2(-0.7453, 0.1127);
    float zoom = pow(0.5, 6.0 * (0.5 - 0.5 * cos(0.15 * iTime)));
    vec2 c = centre + (gl_FragCoord.xy - 0.5 * iResolution) / iResolution.y * 2.5 * zoom;
    vec2 z = vec2(0.0);
    int i = 0;
    for (; i < STEPS && dot(z, z) < 256.0; ++i)
        z = vec2(z.x * z.x - z.y * z.y, 2.0 * z.x * z.y) + c;
    if (i == STEPS) {
        oColor = vec4(0.02, 0.0, 0.05, 1.0);
        return;
    }
    float t = (float(i) - log2(log2(dot(z, z)))) / 64.0;
    oColor = vec4(0.5 + 0.5 * sin(vec3(3.0, 4.0, 5.0) * t + vec3(0.0, 0.6, 1.2)), 1.0);
}
)";

char const* const HG_SDF = R"(// HG_SDF: a ray-marched scene of distance functions from the shipped include: a row of
// rounded boxes cut by spheres, on a floor, under a turning camera.
#include ":/shaders/Include/hg_sdf.glsl"

float Scene(vec3 p)
{
    float floorPlane = fPlane(p, vec3(0.0, 1.0, 0.0), 1.0);
    vec3 q = p;
    pMod1(q.x, 3.0);
    float shape = fOpDifferenceRound(fBoxRounded(q, vec3(0.8), 0.15), fSphere(q, 1.0), 0.1);
    return fOpUnionRound(floorPlane, shape, 0.3);
}

vec3 Normal(vec3 p)
{
    vec2 e = vec2(0.001, 0.0);
    return normalize(vec3(Scene(p + e.xyy) - Scene(p - e.xyy), Scene(p + e.yxy) - Scene(p - e.yxy),
                          Scene(p + e.yyx) - Scene(p - e.yyx)));
}

void main()
{
    vec2 uv = (gl_FragCoord.xy - 0.5 * iResolution) / iResolution.y;
    float a = 0.3 * iTime;
    vec3 eye = vec3(6.0 * sin(a), 2.5, 6.0 * cos(a));
    vec3 forward = normalize(-eye);
    vec3 right = normalize(cross(forward, vec3(0.0, 1.0, 0.0)));
    vec3 up = cross(right, forward);
    vec3 dir = normalize(forward * 1.5 + right * uv.x + up * uv.y);
    float t = 0.0;
    bool hit = false;
    for (int i = 0; i < 128 && t < 60.0; ++i) {
        float d = Scene(eye + dir * t);
        if (d < 0.001) {
            hit = true;
            break;
        }
        t += d;
    }
    vec3 sky = mix(vec3(0.75, 0.8, 0.9), vec3(0.3, 0.45, 0.7), uv.y + 0.5);
    if (!hit) {
        oColor = vec4(sky, 1.0);
        return;
    }
    vec3 p = eye + dir * t;
    vec3 n = Normal(p);
    vec3 light = normalize(vec3(0.6, 0.8, 0.3));
    float diffuse = max(dot(n, light), 0.0);
    float fog = exp(-0.02 * t);
    oColor = vec4(mix(sky, vec3(0.85, 0.7, 0.55) * (0.2 + 0.8 * diffuse), fog), 1.0);
}
)";

char const* const DEFAULT_FINAL = R"(// A new layer: a gradient over the view that slowly changes hue.
void main()
{
    vec2 uv = gl_FragCoord.xy / iResolution;
    vec3 c = 0.5 + 0.5 * cos(iTime + uv.xyx + vec3(0.0, 2.0, 4.0));
    oColor = vec4(c, 1.0);
}
)";

Sample const SAMPLES[] = {
    {"DefaultFinal.vsc", ShaderLayer::RunFinal, DEFAULT_FINAL},
    {"FilterHalftone.vsc", ShaderLayer::RunFinal, HALFTONE},
    {"FilterMangaDots.vsc", ShaderLayer::RunFinal, MANGA_DOTS},
    {"FilterMangaDirection.vsc", ShaderLayer::RunFinal, MANGA_DIRECTION},
    {"FilterLensFlares.vsc", ShaderLayer::RunFinal, LENS_FLARES},
    {"FilterTiltShift.vsc", ShaderLayer::RunFinal, TILT_SHIFT},
    {"FractalJuliaSet.vsc", ShaderLayer::RunFinal, JULIA},
    {"FractalMandelbrotSet.vsc", ShaderLayer::RunFinal, MANDELBROT},
    {"HG_SDF.vsc", ShaderLayer::RunFinal, HG_SDF},
};

} // namespace

bool WriteShaderLayerSamples(std::string const& resources)
{
    QString const folder = QString::fromStdString(resources) + "/scenes/ShaderLayers";
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "cannot make %s\n", folder.toLocal8Bit().constData());
        return false;
    }
    Rendering& rendering = Rendering::instance();
    for (Sample const& sample : SAMPLES) {
        for (auto& group : rendering.ShaderLayers)
            group.clear();
        Shared<ShaderLayer> layer(new ShaderLayer(sample.code));
        // The filters stencil nothing: they go over the background as well.
        layer->stencil = ShaderLayer::StencilAll;
        rendering.addShaderLayer(sample.group, layer);
        Scene scene;
        OFile out;
        scene.saveN(out);
        QFile file(folder + "/" + sample.file);
        std::string const bytes = out.bytes();
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            file.write(bytes.data(), qint64(bytes.size())) != qint64(bytes.size())) {
            std::fprintf(stderr, "cannot write %s\n", file.fileName().toLocal8Bit().constData());
            return false;
        }
    }
    for (auto& group : rendering.ShaderLayers)
        group.clear();
    return true;
}

std::vector<std::string> ShaderLayerSampleFiles()
{
    std::vector<std::string> files;
    for (Sample const& sample : SAMPLES)
        files.push_back(sample.file);
    return files;
}

} // namespace vel
