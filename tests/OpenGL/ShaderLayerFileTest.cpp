// Shader layers without GL: the layer XML file, the scene blocks of layers and common
// includes, the include expansion and its line table, and the Shadertoy adaptation.
#include "Core/Communicate.h"
#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/ObjectShader.h"
#include "OpenGL/ObjectShaderFile.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderLayer.h"
#include "OpenGL/ShaderManager.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vel {
namespace {

class ShaderLayerFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        InitResources();
        connection = QObject::connect(&Communicate::instance(), &Communicate::LogInfo,
                                      [this](QString const& text, int) { log.push_back(text.toStdString()); });
        common = ShaderIncludeManager::instance().common;
    }
    void TearDown() override
    {
        QObject::disconnect(connection);
        for (auto& group : Rendering::instance().ShaderLayers)
            group.clear();
        ShaderIncludeManager::instance().common = common;
    }
    static std::string Layer(std::string const& body)
    {
        return "<?xml version=\"1.0\"?><Vellumbra_Shader_Layer><Version value=\"20200511\"/>" + body +
               "</Vellumbra_Shader_Layer>";
    }
    std::vector<std::string> log;
    std::deque<std::string> common;
    QMetaObject::Connection connection;
};

TEST_F(ShaderLayerFileTest, XmlRoundTripKeepsCodeAndSettings)
{
    ShaderLayer layer("void main()\n{\n    oColor = vec4(\"<&>\" == \"\" ? 1.0 : 0.5);\n}\n");
    layer.depthWrite = true;
    layer.stencil = ShaderLayer::StencilScene;
    layer.mipmapsFromInput.fill(true);
    Shared<ShaderLayer> back = ShaderLayer::FromXML(layer.ToXML(), "memory");
    ASSERT_TRUE(back);
    EXPECT_EQ(back->text, layer.text);
    EXPECT_TRUE(back->depthWrite);
    EXPECT_EQ(back->stencil, ShaderLayer::StencilScene);
    EXPECT_TRUE(back->mipmapsFromInput[3]);
    // The shipped text of a new layer reads, under the older root name too.
    std::string shipped = ShaderManager::ReadFile(":/shaders/ShaderIO/DefaultFinal.xml");
    Shared<ShaderLayer> fresh = ShaderLayer::FromXML(shipped, "DefaultFinal.xml");
    ASSERT_TRUE(fresh);
    EXPECT_EQ(fresh->stencil, ShaderLayer::StencilBackground);
    EXPECT_NE(fresh->text.find("iResolution"), std::string::npos);
    EXPECT_TRUE(ShaderLayer::FromXML("<Tessaron_Shader_Layer><Depth write=\"1\"/></Tessaron_Shader_Layer>", "old"));
}

TEST_F(ShaderLayerFileTest, MalformedLayerFilesAreRefusedWithAMessage)
{
    std::string const whole = Layer("<Stencil test=\"2\"/><Fragment_Shader text=\"void main(){}\"/>");
    struct Case {
        std::string text;
        char const* said; // part of the log message
    };
    Case const cases[] = {
        {whole.substr(0, whole.size() / 2), "not whole XML"},
        {"", "not whole XML"},
        {Layer("<Uniform name=\"x\"/>"), "<Uniform>"},
        {"<?xml version=\"1.0\"?><Shader/>", "root element"},
        {Layer("<Stencil test=\"9\"/>"), "Stencil test"},
        {Layer("<Depth write=\"yes\"/>"), "Depth write"},
        {Layer("<Fragment_Shader text=\"#include &quot;/no/such/file.glsl&quot;&#10;void main(){}\"/>"),
         "/no/such/file.glsl"},
        {Layer("<Fragment_Shader text=\"#include &quot;?Common 7&quot;\"/>"), "?Common 7"},
        {Layer("<Fragment_Shader text=\"" + std::string(size_t(ShaderManager::FileSizeLimit), 'x') + "\"/>"),
         "larger than"},
    };
    for (Case const& c : cases) {
        log.clear();
        EXPECT_FALSE(ShaderLayer::FromXML(c.text, "bad.xml")) << c.said;
        ASSERT_EQ(log.size(), 1u) << c.said;
        EXPECT_NE(log[0].find("bad.xml"), std::string::npos) << log[0];
        EXPECT_NE(log[0].find(c.said), std::string::npos) << log[0];
    }
    // An include in a comment is no include.
    EXPECT_TRUE(ShaderLayer::FromXML(Layer("<Fragment_Shader text=\"// #include &quot;x&quot;\"/>"), "ok"));
}

TEST_F(ShaderLayerFileTest, ObjectShaderFilesRoundTripAndBadOnesChangeNothing)
{
    ObjectShader shader;
    shader.setCode("VertexMainWorldCode", "wPosition.y += sin(iTime);\n");
    shader.setCode("FragmentMainCode", "oColorAlpha = vec4(1, 0, 0, 1); // \"red\" & <bright>\n");
    ObjectShader back;
    ASSERT_TRUE(ObjectShaderFromXML(back, ObjectShaderToXML(shader), "memory"));
    EXPECT_EQ(back.code.at("VertexMainWorldCode"), shader.code.at("VertexMainWorldCode"));
    EXPECT_EQ(back.code.at("FragmentMainCode"), shader.code.at("FragmentMainCode"));
    EXPECT_EQ(back.code.at("VertexIOFunctionsCode"), "");
    for (std::string bad : {std::string("<Vellumbra_Object_Shader><FragmentMainCode text=\"x"),
                            std::string("<Vellumbra_Shader_Layer/>"),
                            std::string("<Vellumbra_Object_Shader><GeometryCode text=\"\"/></Vellumbra_Object_Shader>")}) {
        log.clear();
        EXPECT_FALSE(ObjectShaderFromXML(back, bad, "bad.xml")) << bad;
        EXPECT_EQ(log.size(), 1u) << bad;
        EXPECT_EQ(back.code.at("FragmentMainCode"), shader.code.at("FragmentMainCode")) << bad;
    }
}

TEST_F(ShaderLayerFileTest, SceneBlocksRoundTripAndABrokenBlockChangesNothing)
{
    Rendering& r = Rendering::instance();
    ShaderIncludeManager::instance().common = {"float Half(float x) { return 0.5 * x; }", "#define TWO 2.0\n"};
    Shared<ShaderLayer> sim(new ShaderLayer("void main() { oColor = vec4(1.0); }"));
    sim->custom = true;
    sim->percent = false;
    sim->width = 64;
    sim->height = 32;
    sim->includes = {"?Common 0"};
    r.addShaderLayer(1, sim);
    Shared<ShaderLayer> reader(new ShaderLayer("void main() { oColor = texture(iTex2, vec2(0.5)); }"));
    reader->stencil = ShaderLayer::StencilContent;
    reader->active = false;
    r.addShaderLayer(3, reader);
    // The reader takes the simulation's output.
    sim->fbo = Shared<FBODoubleBuffer>(new FBODoubleBuffer(64, 32));
    reader->set_sampler(2, Shared<Texture>(sim->fbo->attachments[1]));
    std::ostringstream layers, includes;
    r.save_shader_layers(layers);
    r.save_include_common(includes);
    // Loaded back into empty state, the reference is restored to the new simulation's buffer.
    for (auto& group : r.ShaderLayers)
        group.clear();
    ShaderIncludeManager::instance().common.clear();
    std::istringstream layersIn(layers.str()), includesIn(includes.str());
    ASSERT_TRUE(r.load_shader_layers_from_buffer(&layersIn, true));
    ASSERT_TRUE(r.load_include_common_from_buffer(&includesIn, true));
    ASSERT_EQ(r.ShaderLayers[1].size(), 1u);
    ASSERT_EQ(r.ShaderLayers[3].size(), 1u);
    ShaderLayer const& s = *r.ShaderLayers[1][0];
    EXPECT_EQ(s.text, sim->text);
    EXPECT_TRUE(s.custom);
    EXPECT_FALSE(s.percent);
    EXPECT_EQ(s.width, 64.0f);
    EXPECT_EQ(s.includes, sim->includes);
    EXPECT_EQ(s.group, 1);
    ShaderLayer const& t = *r.ShaderLayers[3][0];
    EXPECT_EQ(t.stencil, ShaderLayer::StencilContent);
    EXPECT_FALSE(t.active);
    ASSERT_TRUE(s.fbo);
    EXPECT_EQ(t.samplers[2].get(), s.fbo->front());
    EXPECT_EQ(ShaderIncludeManager::instance().common.size(), 2u);
    EXPECT_EQ(ShaderIncludeManager::instance().common[1], "#define TWO 2.0\n");
    // Saved again, the same bytes: nothing was lost on the way.
    std::ostringstream again;
    r.save_shader_layers(again);
    EXPECT_EQ(again.str(), layers.str());

    // Every cut of the block is refused and leaves the loaded layers in place.
    std::string const bytes = layers.str();
    for (size_t cut : {size_t(0), size_t(5), size_t(20), bytes.size() / 2, bytes.size() - 1}) {
        log.clear();
        std::istringstream in(bytes.substr(0, cut));
        EXPECT_FALSE(r.load_shader_layers_from_buffer(&in, true)) << cut;
        EXPECT_EQ(log.size(), 1u) << cut;
        EXPECT_EQ(r.ShaderLayers[1].size(), 1u) << cut;
        EXPECT_EQ(r.ShaderLayers[3].size(), 1u) << cut;
    }
    std::istringstream cutIncludes(includes.str().substr(0, 12));
    EXPECT_FALSE(r.load_include_common_from_buffer(&cutIncludes, true));
    EXPECT_EQ(ShaderIncludeManager::instance().common.size(), 2u);
}

TEST_F(ShaderLayerFileTest, IncludesExpandOnceAndKeepTheUserLine)
{
    ShaderIncludeManager::instance().common = {"a1\n#include \"?Common 1\"\na3", "b1\nb2", "c1"};
    CodeListing listing;
    listing.generated("header");
    listing.user("#include \"?Common 0\"\n#include \"?Common 1\" // twice\n/* x\n */ u4\n#include \"?Common 9\"\n");
    std::vector<std::string> missing;
    ExpandIncludes(listing, &missing);
    std::vector<std::string> const lines = {"header", "a1", "b1", "b2", "a3", "", "", " u4", "#error missing include ?Common 9"};
    EXPECT_EQ(listing.lines, lines);
    ASSERT_EQ(listing.origins.size(), lines.size());
    // b2 is line 2 of "?Common 1", which the user's line 1 brought in (through "?Common 0").
    EXPECT_EQ(listing.files[size_t(listing.origins[3].file)], "?Common 1");
    EXPECT_EQ(listing.origins[3].line, 2);
    EXPECT_EQ(listing.origins[3].user, 1);
    EXPECT_EQ(listing.origins[7].user, 4);
    EXPECT_EQ(listing.origins[8].user, 5);
    EXPECT_EQ(missing, std::vector<std::string>{"?Common 9"});
}

TEST_F(ShaderLayerFileTest, LogPlacesOfEitherDriverMapToTheUsersLine)
{
    CodeListing listing;
    listing.generated("h1\nh2");
    listing.user("u1\nu2\nu3");
    struct Case {
        char const* log;
        int line;
        char const* message;
    };
    Case const cases[] = {
        {"@code:4(7): error: undefined", 2, "user:2(7): error: undefined"}, // Mesa
        {"@code(5) : error C1503: undefined", 3, "user:3 : error C1503: undefined"}, // NVIDIA
        {"@code(1) : error C0000: in the header", 1, "user:1 : error C0000: in the header"},
        {"(0) : error C0000: syntax error, unexpected $end", 3, "user:3 : error C0000: syntax error, unexpected $end"},
        {"@code(x) : not a place", 0, "@code(x) : not a place"},
        {"@codeword:3: not this shader", 0, "@codeword:3: not this shader"},
    };
    for (Case const& c : cases) {
        std::vector<CodeError> errors = MapCompileLog(c.log, 1, "@code", listing);
        ASSERT_EQ(errors.size(), 1u) << c.log;
        EXPECT_EQ(errors[0].line, c.line) << c.log;
        EXPECT_EQ(errors[0].message, c.message);
    }
}

TEST_F(ShaderLayerFileTest, ShadertoyCodeIsWrappedAroundMainImage)
{
    std::string adapted = ShaderLayer::AdaptFromShadertoy("void mainImage(out vec4 c, in vec2 p) { c = vec4(1); }");
    EXPECT_EQ(adapted.find("#define iChannel0 iTex0\n"), 0u);
    EXPECT_NE(adapted.find("#define iChannel3 iTex3\n"), std::string::npos);
    size_t code = adapted.find("void mainImage");
    size_t starts = adapted.find("// SHADERTOY CODE STARTS HERE");
    size_t ends = adapted.find("// SHADERTOY CODE ENDS HERE");
    size_t call = adapted.find("mainImage(oColor,gl_FragCoord.xy);");
    EXPECT_TRUE(starts < code && code < ends && ends < call) << adapted;
}

} // namespace
} // namespace vel
