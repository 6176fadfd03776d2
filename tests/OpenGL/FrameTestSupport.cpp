#include "FrameTestSupport.h"

#include "ReferencePaths.h"

#include "OpenGL/GLLayer.h"
#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "Scene/Scene.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "Scene/RenderFlags.h"
#include "Support/ViewportDriver.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace vel::test {

namespace {

// The six outputs of the mesh shaders, by draw buffer.
#define OUTPUTS                                                                                                \
    "layout(location = 0) out ivec4 oObjectItemsElement;\n"                                                    \
    "layout(location = 1) out ivec3 oComponentPatchFaces;\n"                                                   \
    "layout(location = 2) out vec4 oNormal;\n"                                                                 \
    "layout(location = 3) out vec2 oRoughMetal;\n"                                                             \
    "layout(location = 4) out vec4 oColorAlpha;\n"                                                             \
    "layout(location = 5) out vec4 oLightThick;\n"

char const* const PAINT = R"(
##VERTEX
uniform vec4 Rect;
uniform float Depth;
out vec2 vLocal;
void main()
{
    vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);
    vLocal = xy * 2.0 - 1.0;
    gl_Position = vec4(mix(Rect.xy, Rect.zw, xy), Depth, 1.0);
}
##FRAGMENT
uniform ivec4 Ids;
uniform int Flags;
uniform int Sphere;
uniform vec3 FlatNormal;
uniform float Depth;
uniform vec2 RoughMetal;
uniform vec4 ColorAlpha;
uniform vec4 LightThick;
in vec2 vLocal;
)" OUTPUTS R"(void main()
{
    vec3 n = FlatNormal;
    float z = Depth;
    if (Sphere != 0) {
        float r2 = dot(vLocal, vLocal);
        if (r2 > 1.0)
            discard;
        n = vec3(vLocal, sqrt(1.0 - r2));
        z = Depth - 0.1 * n.z;
    }
    gl_FragDepth = z * 0.5 + 0.5;
    oObjectItemsElement = Ids;
    oComponentPatchFaces = ivec3(1, 2, 3);
    oNormal = vec4(n * 0.7, intBitsToFloat(Flags));
    oRoughMetal = RoughMetal;
    oColorAlpha = ColorAlpha;
    oLightThick = LightThick;
}
)";

char const* const FLOOR = R"(
##VERTEX
uniform mat4 ProjectionModelViewMatrix;
uniform vec3 Origin;
uniform vec3 U;
uniform vec3 V;
void main()
{
    vec2 xy = vec2(gl_VertexID >> 1, gl_VertexID & 1);
    gl_Position = ProjectionModelViewMatrix * vec4(Origin + xy.x * U + xy.y * V, 1.0);
}
##FRAGMENT
uniform vec3 Normal;
uniform int Flags;
uniform int Id;
)" OUTPUTS R"(void main()
{
    oObjectItemsElement = ivec4(Id, 0, 1, 0);
    oComponentPatchFaces = ivec3(0);
    oNormal = vec4(Normal, intBitsToFloat(Flags));
    oRoughMetal = vec2(0.5, 0.0);
    oColorAlpha = vec4(0.8, 0.8, 0.8, 1.0);
    oLightThick = vec4(0.0);
}
)";

unsigned char Byte(float v)
{
    return static_cast<unsigned char>(std::lround(std::clamp(v, 0.0f, 1.0f) * 255.0f));
}

// Binds the six targets of `layer` and `text`'s program, with depth testing.
void Begin(GLLayer& layer, char const* text)
{
    Shared<Shader> shader = ShaderManager::instance().FromText(text);
    layer.setDrawBuffers(TRenderState());
    gl_Depth_Test.set(true);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    ASSERT_TRUE(shader->enable());
}

} // namespace

void Paint(GLLayer& layer, Patch const& p)
{
    Begin(layer, PAINT);
    Shader::setUniform("Rect", p.rect);
    Shader::setUniform("Depth", p.depth);
    Shader::setUniform("Ids", p.id, 0, 1, 0);
    Shader::setUniform("Flags", p.flags | FLAG_NON_EMPTY);
    Shader::setUniform("Sphere", p.sphere ? 1 : 0);
    Shader::setUniform("FlatNormal", p.normal);
    Shader::setUniform("RoughMetal", p.roughMetal);
    Shader::setUniform("ColorAlpha", p.color);
    Shader::setUniform("LightThick", p.light);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    gl_Depth_Test.set(false);
}

void PaintFloor(GLLayer& layer, float half)
{
    PaintQuad(layer, {-half, 0, -half}, {2 * half, 0, 0}, {0, 0, 2 * half}, {0, 1, 0});
}

void PaintQuad(GLLayer& layer, Vector3<float> const& origin, Vector3<float> const& u, Vector3<float> const& v,
               Vector3<float> const& normal, int id)
{
    Begin(layer, FLOOR);
    Shader::setUniform("ProjectionModelViewMatrix", Shader::ProjectionModelViewMatrix);
    Shader::setUniform("Origin", origin);
    Shader::setUniform("U", u);
    Shader::setUniform("V", v);
    Shader::setUniform("Id", id);
    Vector3<double> n = Vector3<double>(normal.x, normal.y, normal.z) * Shader::NormalMatrix;
    Shader::setUniform("Normal", Vector3<float>(float(n.x), float(n.y), float(n.z)));
    Shader::setUniform("Flags", FLAG_NON_EMPTY | FLAG_LIT);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    gl_Depth_Test.set(false);
}

std::pair<int, int> PixelOf(Vector3<double> const& p, int width, int height)
{
    Vector4<double> c = Vector4<double>(p.x, p.y, p.z, 1) * Shader::ProjectionModelViewMatrix;
    std::pair<int, int> pixel{int((c.x / c.w + 1) * 0.5 * width), int((c.y / c.w + 1) * 0.5 * height)};
    EXPECT_TRUE(pixel.first >= 0 && pixel.first < width && pixel.second >= 0 && pixel.second < height);
    return pixel;
}

std::vector<float> Pixels(Texture2D* texture)
{
    std::vector<unsigned char> bytes;
    texture->getData(bytes);
    std::vector<float> out(bytes.size() / sizeof(float));
    std::memcpy(out.data(), bytes.data(), out.size() * sizeof(float));
    return out;
}

Vector4<float> At(std::vector<float> const& pixels, int width, int x, int y)
{
    float const* p = &pixels[size_t(y * width + x) * 4];
    return {p[0], p[1], p[2], p[3]};
}

void ExpectMatchesReference(std::vector<float> const& pixels, int width, int height, std::string const& name)
{
    QString const path = QString(VEL_REFERENCE_DIR "/%1.png").arg(QString::fromStdString(name));
    QImage picture(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            Vector4<float> c = At(pixels, width, x, y);
            unsigned char* row = picture.scanLine(height - 1 - y);
            row[x * 3] = Byte(c.x);
            row[x * 3 + 1] = Byte(c.y);
            row[x * 3 + 2] = Byte(c.z);
        }
    if (std::getenv("VELLUMBRA_UPDATE_REFERENCES")) {
        ASSERT_TRUE(picture.save(path)) << path.toStdString();
        return;
    }
    QImage reference(path);
    ASSERT_FALSE(reference.isNull()) << "no reference " << path.toStdString()
                                     << "; make it with VELLUMBRA_UPDATE_REFERENCES=1";
    reference = reference.convertToFormat(QImage::Format_RGB888);
    ASSERT_EQ(reference.size(), picture.size()) << name;
    int differing = 0;
    for (int y = 0; y < height; ++y) {
        unsigned char const* a = picture.constScanLine(y);
        unsigned char const* b = reference.constScanLine(y);
        for (int x = 0; x < width * 3; x += 3)
            for (int k = 0; k < 3; ++k)
                if (std::abs(int(a[x + k]) - int(b[x + k])) > 6) {
                    ++differing;
                    break;
                }
    }
    EXPECT_LE(differing, width * height / 100) << name << ": pixels unlike the reference";
}

Vector3<float> IdColor(int id)
{
    uint32_t h = uint32_t(id) * 2654435761u;
    h ^= h >> 15;
    h *= 2246822519u;
    h ^= h >> 13;
    auto channel = [&](int shift) { return float((h >> shift) & 255u) / 255.0f * 0.75f + 0.25f; };
    return {channel(0), channel(8), channel(16)};
}

void ViewFrameTest::SetUp()
{
    GLResourceTest::SetUp();
    Rendering& r = Rendering::instance();
    style = r.style;
    r.style = Rendering::STYLE_COLOR;
    Scene::instance().init(false);
    view.reset(new GLView(W, H));
}

void ViewFrameTest::TearDown()
{
    Scene::instance().init(false);
    view.reset();
    Rendering::instance().style = style;
    GLResourceTest::TearDown();
}

std::vector<float> ViewFrameTest::Frame()
{
    MainLoopFrame(*view);
    return Pixels(view->current());
}

} // namespace vel::test
