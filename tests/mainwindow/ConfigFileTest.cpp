#include "mainwindow/ConfigFile.h"

#include "Core/Communicate.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <utility>
#include <vector>

namespace vel {
namespace {

class ConfigFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        Reset();
        connection = QObject::connect(&Communicate::instance(), &Communicate::LogInfo,
                                      [this](QString const& text, int type) { log.emplace_back(text, type); });
    }
    void TearDown() override { QObject::disconnect(connection); }

    // The defaults, and an empty log.
    void Reset()
    {
        log.clear();
        CAP_FPS = true;
        FPS_MAX = 200;
        CAMERA_TYPE = 0;
        UI_SCALE_AUTO = true;
        UI_SCALE = 1;
        OPEN_SCENE_PATH = OPEN_SHADER_PRE_PATH = OPEN_SHADER_POST_PATH = OPEN_SHADER_FINAL_PATH = "";
        RECENT_FILES.clear();
        ASSET_FOLDERS.clear();
        SSR_RAYS = 4;
    }

    static std::string Doc(std::string const& body, char const* root = "Vellumbra")
    {
        return std::string("<?xml version=\"1.0\"?><") + root + ">" + body + "</" + root + ">";
    }

    std::vector<std::pair<QString, int>> log;
    QMetaObject::Connection connection;
};

TEST_F(ConfigFileTest, StoredInterfaceScaleFollowsItsRules)
{
    struct Case {
        char const* value;
        float scale;
    };
    for (Case c : {Case{"2", 0.5f}, {"0.5", 1.0f}, {"10", 0.33333334f}, {"3", 0.33333334f}, {"1.25", 0.8f}}) {
        UI_SCALE = 1;
        ASSERT_TRUE(ReadConfigText(Doc(std::string("<UIScale auto=\"0\" value=\"") + c.value + "\"/>"), "t"));
        EXPECT_FLOAT_EQ(UI_SCALE, c.scale) << c.value;
        EXPECT_FALSE(UI_SCALE_AUTO);
    }
}

TEST_F(ConfigFileTest, RecentFilesKeepEightNewestFirstWithoutRepeats)
{
    for (int i = 1; i <= 9; ++i)
        AddRecentFile("f" + std::to_string(i));
    EXPECT_EQ(RECENT_FILES, (std::deque<std::string>{"f9", "f8", "f7", "f6", "f5", "f4", "f3", "f2"}));
    AddRecentFile("f5");
    EXPECT_EQ(RECENT_FILES, (std::deque<std::string>{"f5", "f9", "f8", "f7", "f6", "f4", "f3", "f2"}));
}

TEST_F(ConfigFileTest, NumberedListsEndAtTheFirstGap)
{
    std::string recent = "<RecentFiles><File1 path=\"a\"/><File2 path=\"b\"/><File4 path=\"d\"/></RecentFiles>";
    std::string assets = "<AssetFolders><Folder2 path=\"x\"/></AssetFolders>";
    ASSERT_TRUE(ReadConfigText(Doc(recent + assets), "t"));
    EXPECT_EQ(RECENT_FILES, (std::deque<std::string>{"a", "b"}));
    EXPECT_TRUE(ASSET_FOLDERS.empty());

    std::string nine = "<RecentFiles>";
    for (int i = 1; i <= 9; ++i)
        nine += "<File" + std::to_string(i) + " path=\"p" + std::to_string(i) + "\"/>";
    ASSERT_TRUE(ReadConfigText(Doc(nine + "</RecentFiles>"), "t"));
    EXPECT_EQ(RECENT_FILES.size(), 8u);
    EXPECT_EQ(RECENT_FILES.back(), "p8");
}

TEST_F(ConfigFileTest, ShaderFoldersAreReadByFileVersion)
{
    std::string paths = "<Paths><Scenes path=\"s\"/><Shaders path=\"one\"/><PreShaders path=\"pre\"/>"
                        "<PostShaders path=\"post\"/><FinalShaders path=\"final\"/></Paths>";
    struct Case {
        char const* version;
        char const* pre;
        char const* final;
    };
    for (Case c : {Case{"20191111", "one", "one"}, {"20230711", "pre", "final"}, {"20180101", "", ""}}) {
        OPEN_SHADER_PRE_PATH = OPEN_SHADER_FINAL_PATH = "";
        ASSERT_TRUE(ReadConfigText(Doc(std::string("<Version value=\"") + c.version + "\"/>" + paths), "t"));
        EXPECT_EQ(OPEN_SHADER_PRE_PATH, c.pre) << c.version;
        EXPECT_EQ(OPEN_SHADER_FINAL_PATH, c.final) << c.version;
        EXPECT_EQ(OPEN_SCENE_PATH, "s");
    }
}

// A missing file is no error; a saved one loads back the same, the older root too, and is
// written back under the new root.
TEST_F(ConfigFileTest, SavedSettingsLoadBackTheSame)
{
    std::string const saved = CONFIG_FILE;
    CONFIG_FILE = ::testing::TempDir() + "vellumbra_config_test.xml";
    std::remove(CONFIG_FILE.c_str());
    LoadConfigFile();
    EXPECT_TRUE(log.empty());
    EXPECT_FLOAT_EQ(FPS_MAX, 200);

    CAP_FPS = false;
    FPS_MAX = 75;
    UI_SCALE_AUTO = false;
    UI_SCALE = 0.5f;
    OPEN_SHADER_POST_PATH = "/shaders/post";
    RECENT_FILES = {"/a b.vsc", "/c&d.vsc"};
    ASSET_FOLDERS = {"/assets"};
    ASSERT_TRUE(SaveConfigFile());
    Reset();
    LoadConfigFile();
    std::remove(CONFIG_FILE.c_str());
    CONFIG_FILE = saved;
    EXPECT_FALSE(CAP_FPS);
    EXPECT_FLOAT_EQ(FPS_MAX, 75);
    EXPECT_FALSE(UI_SCALE_AUTO);
    EXPECT_FLOAT_EQ(UI_SCALE, 0.5f);
    EXPECT_EQ(OPEN_SHADER_POST_PATH, "/shaders/post");
    EXPECT_EQ(RECENT_FILES, (std::deque<std::string>{"/a b.vsc", "/c&d.vsc"}));
    EXPECT_EQ(ASSET_FOLDERS, (std::deque<std::string>{"/assets"}));

    ASSERT_TRUE(ReadConfigText(Doc("<FPS cap=\"1\" max=\"60\"/><Camera type=\"1\"/>", "Tessaron"), "t"));
    EXPECT_TRUE(CAP_FPS);
    EXPECT_FLOAT_EQ(FPS_MAX, 60);
    EXPECT_EQ(CAMERA_TYPE, 1);
    EXPECT_NE(ConfigText().find("<Vellumbra>"), std::string::npos);
}

// Broken documents change nothing; bad values leave their own setting alone. Either way a
// warning says so.
TEST_F(ConfigFileTest, MalformedInputIsReportedAndChangesNothing)
{
    std::string full = Doc("<FPS cap=\"0\" max=\"30\"/><RecentFiles><File1 path=\"a\"/></RecentFiles>");
    struct Case {
        std::string text;
        bool accepted;
    };
    std::vector<Case> cases = {
        {full.substr(0, full.size() / 2), false},              // truncated
        {"", false},                                           // empty
        {"\x01\x02garbage", false},                            // not XML
        {Doc("<FPS cap=\"0\" max=\"30\"/>", "Other"), false},   // unknown root
        {std::string(CONFIG_BYTES_MAX + 1, ' '), false},       // too large to be a configuration
        {Doc("<FPS max=\"0\"/>"), true},                        // a timer period of infinity
        {Doc("<FPS max=\"nan\"/>"), true},
        {Doc("<FPS max=\"-5\"/>"), true},
        {Doc("<UIScale value=\"inf\"/>"), true},
        {Doc("<Camera type=\"7\"/>"), true},
        {Doc("<SSRRays value=\"99999999999\"/>"), true},
    };
    for (Case const& c : cases) {
        Reset();
        EXPECT_EQ(ReadConfigText(c.text, "vellumbra.xml"), c.accepted) << c.text.substr(0, 40);
        EXPECT_TRUE(CAP_FPS);
        EXPECT_FLOAT_EQ(FPS_MAX, 200);
        EXPECT_FLOAT_EQ(UI_SCALE, 1);
        EXPECT_EQ(CAMERA_TYPE, 0);
        EXPECT_EQ(SSR_RAYS, 4);
        EXPECT_TRUE(RECENT_FILES.empty());
        ASSERT_FALSE(log.empty()) << c.text.substr(0, 40);
        EXPECT_EQ(log.back().second, 1);
        EXPECT_TRUE(log.back().first.contains("vellumbra.xml"));
    }
}

} // namespace
} // namespace vel
