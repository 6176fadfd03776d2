// The shipped GLSL headers on a real driver: RenderFlags and MaterialUtils agree bit for bit
// with the C++ side (encoded on one side, decoded on the other, read back through transform
// feedback), and hg_sdf gives the distances that geometry says.
#include "GLResourceTest.h"

#include "Math/Pbr.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "Scene/RenderFlags.h"

#include <cmath>
#include <cstring>
#include <random>

namespace vel::test {
namespace {

class IncludeFilesTest : public GLResourceTest {};

// ------------------------------------------------------------------------------------------
// RenderFlags
// ------------------------------------------------------------------------------------------

TEST_F(IncludeFilesTest, RenderFlagValuesAgreeWithTheProgram)
{
    Shared<Shader> s = ShaderManager::instance().FromText(
        "##VERTEX\n"
        "#include \":/shaders/Include/RenderFlags.glsl\"\n"
        "uniform vec2 RenderFlags;\n"
        "out ivec4 oFlags;\n"
        "out ivec4 oMore;\n"
        "out ivec4 oTypes;\n"
        "out ivec4 oDecoded;\n"
        "void main() {\n"
        "    oFlags = ivec4(FLAG_LIT, FLAG_COLOR_GLOWS, FLAG_CONTOURS, FLAG_FEATURES);\n"
        "    oMore = ivec4(FLAG_FLIPPED, FLAG_LUMINARY, FLAG_NON_EMPTY, FLAGS_OBJ_TYPE);\n"
        "    oTypes = ivec4(VALUE_CURVE, VALUE_BONE, VALUE_RB_STATIC, VALUE_RB_DYNAMIC);\n"
        "    int front = RenderFlagsFromFloat(RenderFlags.x);\n"
        "    oDecoded = ivec4(front, RenderObjectType(front), int(HasRenderFlag(front, FLAG_FLIPPED)),\n"
        "                     RenderFlagsFromFloat(RenderFlags.y));\n"
        "}\n");
    ASSERT_TRUE(s->enable());
    // A flag word as the element drawing forms it, carried in the bits of a float.
    int front = VALUE_RB_DYNAMIC << FLAGS_OBJ_TYPE_SHIFT | FLAG_NON_EMPTY | FLAG_LIT | FLAG_LUMINARY;
    int back = front | FLAG_FLIPPED;
    float carriers[2];
    std::memcpy(&carriers[0], &front, 4);
    std::memcpy(&carriers[1], &back, 4);
    Shader::setUniform("RenderFlags", carriers[0], carriers[1]);

    auto words = CaptureFeedback({4, 4, 4, 4}, 1);
    int const expected[4][4] = {{FLAG_LIT, FLAG_COLOR_GLOWS, FLAG_CONTOURS, FLAG_FEATURES},
                                {FLAG_FLIPPED, FLAG_LUMINARY, FLAG_NON_EMPTY, FLAGS_OBJ_TYPE},
                                {VALUE_CURVE, VALUE_BONE, VALUE_RB_STATIC, VALUE_RB_DYNAMIC},
                                {front, VALUE_RB_DYNAMIC, 0, back}};
    for (size_t output = 0; output < 4; ++output)
        for (size_t component = 0; component < 4; ++component)
            EXPECT_EQ(int(words[output][component]), expected[output][component]) << output << ", " << component;
}

// ------------------------------------------------------------------------------------------
// MaterialUtils
// ------------------------------------------------------------------------------------------

// Decodes the materials of a usampler2D with one variant and encodes the result again.
std::string const kDecode = "##VERTEX\n"
                            "#include \":/shaders/Include/MaterialUtils.glsl\"\n"
                            "uniform usampler2D Materials;\n"
                            "out vec4 oColorAlpha;\n"
                            "out vec4 oLightThick;\n"
                            "out vec2 oRoughMetal;\n"
                            "out uvec4 oEncoded;\n"
                            "void main() {\n"
                            "    uvec4 m = texelFetch(Materials, ivec2(gl_VertexID, 0), 0);\n"
                            "    vec4 c; vec4 l; vec2 rm;\n"
                            "#if defined(SIGNED) && defined(NORMALIZED)\n"
                            "    DecodeMaterialNormalizedSigned(m, c, l, rm);\n"
                            "    oEncoded = EncodeMaterialNormalizedSigned(c, l, rm);\n"
                            "#elif defined(SIGNED)\n"
                            "    DecodeMaterialSigned(m, c, l, rm);\n"
                            "    oEncoded = EncodeMaterialSigned(c, l, rm);\n"
                            "#elif defined(NORMALIZED)\n"
                            "    DecodeMaterialNormalizedUnsigned(m, c, l, rm);\n"
                            "    oEncoded = EncodeMaterialNormalizedUnsigned(c, l, rm);\n"
                            "#else\n"
                            "    DecodeMaterialUnsigned(m, c, l, rm);\n"
                            "    oEncoded = EncodeMaterialUnsigned(c, l, rm);\n"
                            "#endif\n"
                            "    oColorAlpha = c; oLightThick = l; oRoughMetal = rm;\n"
                            "}\n";

std::vector<Pbr> SampleMaterials()
{
    std::vector<Pbr> materials(2); // the default, and one built below
    materials[1].w[0] = materials[1].w[1] = materials[1].w[2] = materials[1].w[3] = 0;
    Pbr full;
    full.w[0] = full.w[1] = full.w[2] = full.w[3] = 0xFFFFFFFFu;
    materials.push_back(full);
    std::mt19937 random(20230711);
    for (int i = 0; i < 29; ++i) {
        Pbr p;
        for (uint32_t& word : p.w)
            word = uint32_t(random());
        materials.push_back(p);
    }
    return materials;
}

TEST_F(IncludeFilesTest, MaterialDecodersReadTheBitsThatPbrWrites)
{
    std::vector<Pbr> materials = SampleMaterials();
    int n = int(materials.size());
    Texture2D texture(n, 1, GL_RGBA32UI, GL_RGBA_INTEGER, GL_UNSIGNED_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    texture.copy(materials.data(), n * 16);

    struct Variant {
        char const* defines;
        bool isSigned;
        bool normalized;
    };
    for (Variant v : {Variant{"", false, false}, Variant{"SIGNED", true, false}, Variant{"NORMALIZED", false, true},
                      Variant{"SIGNED NORMALIZED", true, true}}) {
        SCOPED_TRACE(v.defines);
        Shared<Shader> s = ShaderManager::instance().FromText(kDecode, v.defines);
        ASSERT_TRUE(s->enable());
        ASSERT_TRUE(texture.enable());
        Shader::setUniform("Materials", texture.activeTexture());
        auto words = CaptureFeedback({4, 4, 2, 4}, n);
        texture.disable();

        for (int k = 0; k < n; ++k) {
            Pbr const& p = materials[size_t(k)];
            fPbr f(p, v.isSigned);
            float colorScale = v.normalized ? 1.0f / 8192.0f : 1.0f;
            float pieceScale = v.normalized ? (v.isSigned ? 1.0f / 2048.0f : 1.0f / 4096.0f) : 1.0f;
            for (int c = 0; c < 4; ++c) {
                EXPECT_EQ(AsFloat(words[0][size_t(4 * k + c)]), f.color[c] * colorScale) << k;
                EXPECT_EQ(AsFloat(words[1][size_t(4 * k + c)]), f.light[c] * colorScale) << k;
                EXPECT_EQ(words[3][size_t(4 * k + c)], p.w[c]) << "round trip of material " << k;
            }
            EXPECT_EQ(AsFloat(words[2][size_t(2 * k)]), f.rough * pieceScale) << k;
            EXPECT_EQ(AsFloat(words[2][size_t(2 * k + 1)]), f.metal * pieceScale) << k;
        }
    }
}

TEST_F(IncludeFilesTest, MaterialEncodersWriteTheBitsThatPbrWrites)
{
    // Values inside, on and beyond the ranges, with fractions that must be cut, not rounded.
    std::vector<Vector4<float>> colors = {{0.0f, 0.5f, 1.0f, 2.0f},     {-0.25f, 0.123456f, 0.999f, 0.0001f},
                                          {0.3f, 0.7f, 0.9999f, 1.5f},  {1.0f / 8192.0f, 8191.5f / 8192.0f, 0.25f, 0.75f}};
    std::vector<Vector2<float>> pieces = {{0.0f, 0.5f}, {-1.0f, 0.999f}, {1.0f, -0.5f}, {0.3333f, -2.0f}};
    int n = int(colors.size());
    std::vector<float> colorArray, lightArray, pieceArray;
    for (int k = 0; k < n; ++k)
        for (int c = 0; c < 4; ++c) {
            colorArray.push_back(colors[size_t(k)][c]);
            lightArray.push_back(colors[size_t((k + 1) % n)][c]);
        }
    for (Vector2<float> const& p : pieces) {
        pieceArray.push_back(p.x);
        pieceArray.push_back(p.y);
    }
    Shared<Shader> s = ShaderManager::instance().FromText(
        "##VERTEX\n"
        "#include \":/shaders/Include/MaterialUtils.glsl\"\n"
        "uniform vec4 Colors[4];\n"
        "uniform vec4 Lights[4];\n"
        "uniform vec2 Pieces[4];\n"
        "out uvec4 oUnsigned;\n"
        "out uvec4 oSigned;\n"
        "out uvec4 oNormalizedUnsigned;\n"
        "out uvec4 oNormalizedSigned;\n"
        "void main() {\n"
        "    vec4 c = Colors[gl_VertexID]; vec4 l = Lights[gl_VertexID]; vec2 rm = Pieces[gl_VertexID];\n"
        "    oUnsigned = EncodeMaterialUnsigned(c * 8192.0, l * 8192.0, rm * 4096.0);\n"
        "    oSigned = EncodeMaterialSigned(c * 8192.0, l * 8192.0, rm * 2048.0);\n"
        "    oNormalizedUnsigned = EncodeMaterialNormalizedUnsigned(c, l, rm);\n"
        "    oNormalizedSigned = EncodeMaterialNormalizedSigned(c, l, rm);\n"
        "}\n");
    ASSERT_TRUE(s->enable());
    Shader::setUniformArray("Colors", 4, colorArray.data(), n);
    Shader::setUniformArray("Lights", 4, lightArray.data(), n);
    Shader::setUniformArray("Pieces", 2, pieceArray.data(), n);
    auto words = CaptureFeedback({4, 4, 4, 4}, n);

    for (int k = 0; k < n; ++k) {
        Vector4<float> c = colors[size_t(k)] * 8192.0f, l = colors[size_t((k + 1) % n)] * 8192.0f;
        Vector2<float> rm = pieces[size_t(k)];
        Pbr unsignedPbr, signedPbr, normalizedUnsigned, normalizedSigned;
        unsignedPbr.fromFPbr(c, l, rm.x * 4096.0f, rm.y * 4096.0f, false);
        signedPbr.fromFPbr(c, l, rm.x * 2048.0f, rm.y * 2048.0f, true);
        // The normalised forms through the CPU's own normalised setters.
        normalizedUnsigned.fromFPbr({}, {}, rm.x * 4096.0f, rm.y * 4096.0f, false);
        normalizedSigned.fromFPbr({}, {}, rm.x * 2048.0f, rm.y * 2048.0f, true);
        for (Pbr* p : {&normalizedUnsigned, &normalizedSigned}) {
            p->set_color_alpha(colors[size_t(k)], true);
            p->set_light_thick(colors[size_t((k + 1) % n)], true);
        }
        for (int w = 0; w < 4; ++w) {
            EXPECT_EQ(words[0][size_t(4 * k + w)], unsignedPbr.w[w]) << "unsigned, case " << k << " word " << w;
            EXPECT_EQ(words[1][size_t(4 * k + w)], signedPbr.w[w]) << "signed, case " << k << " word " << w;
            EXPECT_EQ(words[2][size_t(4 * k + w)], normalizedUnsigned.w[w]) << "normalised unsigned, case " << k;
            EXPECT_EQ(words[3][size_t(4 * k + w)], normalizedSigned.w[w]) << "normalised signed, case " << k;
        }
    }
}

TEST_F(IncludeFilesTest, MaterialAsUniformKeepsItsBits)
{
    Shared<Shader> s = ShaderManager::instance().FromText("##VERTEX\nuniform uvec4 Material;\nout uvec4 oWords;\n"
                                                          "void main() { oWords = Material; }\n");
    ASSERT_TRUE(s->enable());
    Pbr p;
    p.w[1] = 0x80000001u;
    Shader::setUniform("Material", p);
    auto words = CaptureFeedback({4}, 1);
    for (int w = 0; w < 4; ++w)
        EXPECT_EQ(words[0][size_t(w)], p.w[w]);
}

// ------------------------------------------------------------------------------------------
// hg_sdf
// ------------------------------------------------------------------------------------------

TEST_F(IncludeFilesTest, SdfPrimitivesAndBlendsGiveTheirDistances)
{
    struct Case {
        std::string expression; // GLSL giving a vec2: (distance or value, second value), or a block setting oValue
        float value;
        float second;
    };
    float const r2 = std::sqrt(2.0f), h = std::sqrt(0.5f);
    std::vector<Case> cases = {
        {"vec2(fSphere(vec3(3.0, 4.0, 0.0), 2.0), 0.0)", 3.0f, 0},
        {"vec2(fBox(vec3(2.0, 0.0, 0.0), vec3(1.0)), 0.0)", 1.0f, 0},
        {"vec2(fBox(vec3(2.0, 2.0, 0.0), vec3(1.0)), 0.0)", r2, 0},
        {"vec2(fBox(vec3(0.5, 0.0, 0.0), vec3(1.0)), 0.0)", -0.5f, 0},
        {"vec2(fBoxRounded(vec3(2.0, 0.0, 0.0), vec3(1.0), 0.25), 0.0)", 1.0f, 0},
        {"vec2(fCylinder(vec3(3.0, 0.0, 4.0), 2.0, 1.0), fCylinder(vec3(0.0, 3.0, 0.0), 2.0, 1.0))", 3.0f, 2.0f},
        {"vec2(fCapsule(vec3(0.0, 5.0, 0.0), 1.0, 2.0), fCapsule(vec3(3.0, 0.0, 0.0), 1.0, 2.0))", 2.0f, 2.0f},
        {"vec2(fCapsule(vec3(2.0, 0.0, 0.0), vec3(0.0, -1.0, 0.0), vec3(0.0, 1.0, 0.0), 0.5), 0.0)", 1.5f, 0},
        {"vec2(fTorus(vec3(5.0, 0.0, 0.0), 3.0, 1.0), fTorus(vec3(0.0, 2.0, 0.0), 3.0, 1.0))", 1.0f,
         std::sqrt(13.0f) - 1.0f},
        {"vec2(fCone(vec3(0.0, -1.0, 0.0), 1.0, 2.0), fCone(vec3(0.0, 3.0, 0.0), 1.0, 2.0))", 1.0f, 1.0f},
        {"vec2(fCone(vec3(0.0, 0.5, 0.0), 1.0, 2.0), 0.0)", -0.5f, 0},
        {"vec2(fPlane(vec3(1.0, 2.0, 3.0), vec3(0.0, 1.0, 0.0), 0.5), 0.0)", 1.5f, 0},
        {"vec2(fEllipsoid(vec3(3.0, 0.0, 0.0), vec3(2.0, 1.0, 1.0)), 0.0)", 1.0f, 0},
        {"vec2(fOpUnion(1.0, 2.0), fOpIntersection(1.0, 2.0))", 1.0f, 2.0f},
        {"vec2(fOpDifference(1.0, -2.0), 0.0)", 2.0f, 0},
        {"vec2(fOpUnionChamfer(1.0, 1.0, 1.0), fOpIntersectionChamfer(-1.0, -1.0, 1.0))", h, -h},
        {"vec2(fOpUnionRound(0.5, 0.5, 1.0), fOpUnionRound(3.0, 0.2, 1.0))", 1.0f - h, 0.2f},
        {"vec2(fOpIntersectionRound(-0.5, -0.5, 1.0), fOpDifferenceRound(-1.0, 2.0, 1.0))", h - 1.0f, -1.0f},
        {"vec2(fOpUnionStairs(0.25, 0.25, 1.0, 2.0), fOpUnionStairs(3.0, 0.5, 1.0, 4.0))", -0.25f, 0.5f},
        {"vec2(fOpIntersectionStairs(-3.0, -0.5, 1.0, 4.0), fOpDifferenceStairs(-3.0, 0.5, 1.0, 4.0))", -0.5f, -0.5f},
        {"vec2(fOpUnionSoft(1.0, 1.0, 1.0), fOpShell(1.0, 0.5))", 0.75f, 0.75f},
        // Domain operators: (the cell or side they return, the point they leave).
        {"{ float p = 7.3; float cell = pMod1(p, 2.0); oValue = vec2(cell, p); }", 4.0f, -0.7f},
        {"{ vec2 p = vec2(0.0, 1.0); float cell = pModPolar(p, 4.0); oValue = vec2(cell, p.x); }", 1.0f, 1.0f},
        {"{ float p = -3.0; float side = pMirror(p, 1.0); oValue = vec2(side, p); }", -1.0f, 2.0f},
        {"{ float p = 9.0; float cell = pModInterval1(p, 2.0, -1.0, 2.0); oValue = vec2(cell, p); }", 2.0f, 5.0f},
        {"{ vec3 p = vec3(0.0, -2.0, 0.0); float side = pReflect(p, vec3(0.0, 1.0, 0.0), 0.5); oValue = vec2(side, p.y); }",
         -1.0f, 3.0f},
    };
    std::string text = "##VERTEX\n#include \":/shaders/Include/hg_sdf.glsl\"\nout vec2 oValue;\n"
                       "void main() {\n    switch (gl_VertexID) {\n";
    for (size_t i = 0; i < cases.size(); ++i) {
        std::string const& e = cases[i].expression;
        text += "    case " + std::to_string(i) + ": " + (e[0] == '{' ? e : "oValue = " + e + ";") + " break;\n";
    }
    text += "    default: oValue = vec2(0.0);\n    }\n}\n";
    Shared<Shader> s = ShaderManager::instance().FromText(text);
    std::unordered_map<int, std::string> errors;
    ASSERT_TRUE(s->compile(errors)) << errors[0] << errors[2];
    ASSERT_TRUE(s->enable());
    auto words = CaptureFeedback({2}, int(cases.size()));
    for (size_t i = 0; i < cases.size(); ++i) {
        EXPECT_NEAR(AsFloat(words[0][2 * i]), cases[i].value, 1e-5f) << cases[i].expression;
        EXPECT_NEAR(AsFloat(words[0][2 * i + 1]), cases[i].second, 1e-5f) << cases[i].expression;
    }
}

TEST_F(IncludeFilesTest, AllHeadersCompileTogetherInBothStages)
{
    std::string includes;
    for (char const* name : {"RenderFlags", "MaterialUtils", "Math", "Graphics", "hg_sdf"})
        includes += "#include \":/shaders/Include/" + std::string(name) + ".glsl\"\n";
    Shared<Shader> s = ShaderManager::instance().FromText(
        "##VERTEX\n" + includes +
        "void main() { gl_Position = vec4(rot(vec3(1.0, 0.0, 0.0), vec3(0.0, 1.0, 0.0)) * vec3(fSphere(vec3(0.0), 1.0)), 1.0); }\n"
        "##FRAGMENT\n" +
        includes +
        "out vec4 oColor;\n"
        "void main() { oColor = vec4(linearToSRGB(vec3(saturate(hash11(1.0)))), float(RenderObjectType(FLAG_LIT))); }\n");
    std::unordered_map<int, std::string> errors;
    EXPECT_TRUE(s->compile(errors)) << errors[0] << errors[1] << errors[2];
}

} // namespace
} // namespace vel::test
