#include "OpenGL/Rendering.h"

#include <algorithm>
#include <cmath>
#include "Core/Communicate.h"
#include "OpenGL/Environment.h"
#include "OpenGL/Texture2D.h"
#include "OpenGL/ShaderLayer.h"
#include "OpenGL/TextureManager.h"
#include "Scene/SceneFile.h"

namespace vel {

char const* const Rendering::DEFAULT_ENVIRONMENT = ":/PBR/Newport_Loft_Ref.hdr";
char const* const Rendering::DEFAULT_BRDF = ":/PBR/ibl_brdf_lut.png";
char const* const Rendering::DEFAULT_MATCAP = ":/Materials/MatCaps/RedClay.png";

Rendering::Rendering()
{
    // Scene files take the shader layers and common includes from here.
    gSaveShaderLayers = [](std::ostream& out) { Rendering::instance().save_shader_layers(out); };
    gSaveIncludeCommon = [](std::ostream& out) { Rendering::instance().save_include_common(out); };
}

Rendering::~Rendering() = default;

// ---- image-based light

Environment* Rendering::environment() const
{
    return static_cast<Environment*>(currentEnvironment.get());
}

bool Rendering::setEnvironment(std::string const& path)
{
    Shared<Texture> texture = TextureManager::instance().AddFile(path, GL_CLAMP_TO_EDGE, GL_LINEAR);
    if (!texture || !dynamic_cast<Environment*>(texture.get())) {
        LogInfo(QString("The environment '%1' cannot be read; the current one stays.").arg(QString::fromStdString(path)), 1);
        return false;
    }
    currentEnvironment = texture;
    return true;
}

void Rendering::openResources()
{
    TextureManager& textures = TextureManager::instance();
    if (!currentEnvironment)
        setEnvironment(DEFAULT_ENVIRONMENT);
    BRDF = textures.AddFile(DEFAULT_BRDF, GL_CLAMP_TO_EDGE, GL_LINEAR);
    matcap = textures.AddFile(DEFAULT_MATCAP, GL_CLAMP_TO_EDGE, GL_LINEAR);
}

void Rendering::closeResources()
{
    currentEnvironment = BRDF = matcap = Shared<Texture>();
    // The static noise texture would otherwise be freed after the driver has gone at exit.
    Texture2D::Random = Shared<Texture2D>();
    // Layers hold programs and buffers: they go while the context is current.
    for (auto& group : ShaderLayers)
        group.clear();
    ShaderLayer::Loaded = Shared<ShaderLayer>();
}

// ---- styles

bool Rendering::hasMaterials(int style)
{
    return style == STYLE_COLOR || style == STYLE_PBR;
}

TRenderState Rendering::renderState(int kind) const
{
    TRenderState state;
    state.kind = kind;
    state.twoSided = twoSided;
    state.plain = plain;
    return state;
}

Vector4<float> Rendering::clearColor() const
{
    float const alpha = transparentBackground ? 0.0f : 1.0f;
    if (style == 1)
        return {0.0f, 0.0f, 0.0f, alpha};
    if (style == 3)
        return {0.5f, 0.5f, 1.0f, alpha};
    Vector4<float> c = background;
    c.w = alpha;
    if (!hasMaterials(style) || tonemap == 0)
        return c;
    float* channel[3] = {&c.x, &c.y, &c.z};
    for (float* v : channel) {
        *v = std::pow(*v, gamma);
        if (tonemap == 2)
            *v = *v / (1.001f - *v);
        else
            *v = inverseToneCurve(tonemap, *v);
        *v /= exposure;
    }
    return c;
}

float Rendering::toneCurve(int tonemap, float x)
{
    switch (tonemap) {
    case 2:
        return x / (1.0f + x);
    case 3: {
        auto filmic = [](float v) {
            float const A = 0.15f, B = 0.50f, C = 0.10f, D = 0.20f, E = 0.02f, F = 0.30f;
            return (v * (A * v + C * B) + D * E) / (v * (A * v + B) + D * F) - E / F;
        };
        return filmic(x) / filmic(11.2f);
    }
    case 4:
        return std::clamp(x * (2.51f * x + 0.03f) / (x * (2.43f * x + 0.59f) + 0.14f), 0.0f, 1.0f);
    default:
        return x;
    }
}

float Rendering::inverseToneCurve(int tonemap, float y)
{
    if (tonemap < 2 || tonemap > 4)
        return y;
    // The curves rise monotonically from 0: bisection, to float precision. Values near the
    // top of a curve that flattens (ACES clamps at 1) take the lowest x that gives them.
    float lo = 0.0f, hi = 1000.0f;
    for (int i = 0; i < 64; ++i) {
        float mid = 0.5f * (lo + hi);
        (toneCurve(tonemap, mid) < y ? lo : hi) = mid;
    }
    return 0.5f * (lo + hi);
}

} // namespace vel
