#include "mainwindow/ConfigFile.h"

#include "Core/Communicate.h"
#include "OpenGL/Rendering.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

namespace vel {

std::string CONFIG_FILE = "vellumbra.xml";
bool CAP_FPS = true;
float FPS_MAX = 200.0f;
int CAMERA_TYPE = 0;
bool UI_SCALE_AUTO = true;
float UI_SCALE = 1.0f;
int SDF_ITERATIONS = 128;
int SSR_RAYS = 8;

std::string OPEN_SCENE_PATH;
std::string OPEN_OBJECT_PATH;
std::string OPEN_TEXTURE_PATH;
std::string OPEN_GLSL_INCLUDE_PATH;
std::string OPEN_ALPHA_PATH;
std::string OPEN_SHADER_PRE_PATH;
std::string OPEN_SHADER_POST_PATH;
std::string OPEN_SHADER_FINAL_PATH;
std::string OPEN_OBJECT_SHADER_PATH;
std::string OPEN_RENDER_IMAGE_PATH;
std::string INSTANT_MESHES_PATH;

std::deque<std::string> RECENT_FILES;
std::deque<std::string> ASSET_FOLDERS;

namespace {

// The version at which the three shader folders were one.
constexpr int VERSION_SINGLE_SHADER_FOLDER = 20191111;

struct PathEntry {
    char const* tag;
    std::string* path;
};

// The children of `Paths`, in the order they are written. The three shader folders sit in
// the middle and are read apart, by version.
PathEntry const PATHS[] = {
    {"Scenes", &OPEN_SCENE_PATH},
    {"Objects", &OPEN_OBJECT_PATH},
    {"Textures", &OPEN_TEXTURE_PATH},
    {"GlslInclude", &OPEN_GLSL_INCLUDE_PATH},
    {"Alphas", &OPEN_ALPHA_PATH},
    {"PreShaders", &OPEN_SHADER_PRE_PATH},
    {"PostShaders", &OPEN_SHADER_POST_PATH},
    {"FinalShaders", &OPEN_SHADER_FINAL_PATH},
    {"ObjectShaders", &OPEN_OBJECT_SHADER_PATH},
    {"RenderImages", &OPEN_RENDER_IMAGE_PATH},
    {"InstantMeshes", &INSTANT_MESHES_PATH},
};

bool IsShaderFolder(std::string const* path)
{
    return path == &OPEN_SHADER_PRE_PATH || path == &OPEN_SHADER_POST_PATH || path == &OPEN_SHADER_FINAL_PATH;
}

// Everything a document may set, applied only when the whole document was read.
struct Settings {
    bool capFps = CAP_FPS;
    float fpsMax = FPS_MAX;
    int cameraType = CAMERA_TYPE;
    bool uiScaleAuto = UI_SCALE_AUTO;
    float uiScale = UI_SCALE;
    int sdfIterations = SDF_ITERATIONS;
    int ssrRays = SSR_RAYS;
    std::string paths[std::size(PATHS)];
    std::deque<std::string> recent = RECENT_FILES;
    std::deque<std::string> assets = ASSET_FOLDERS;

    Settings()
    {
        for (std::size_t i = 0; i < std::size(PATHS); ++i)
            paths[i] = *PATHS[i].path;
    }

    void apply() const
    {
        CAP_FPS = capFps;
        FPS_MAX = fpsMax;
        CAMERA_TYPE = cameraType;
        UI_SCALE_AUTO = uiScaleAuto;
        UI_SCALE = uiScale;
        SDF_ITERATIONS = sdfIterations;
        SSR_RAYS = ssrRays;
        Rendering::instance().ssrRays = ssrRays; // what the reflection pass reads
        for (std::size_t i = 0; i < std::size(PATHS); ++i)
            *PATHS[i].path = paths[i];
        RECENT_FILES = recent;
        ASSET_FOLDERS = assets;
    }
};

// Reads one attribute of `element` into `out` when present and inside [low, high]; a value
// that is there but unreadable or out of range is reported and leaves `out` as it was.
template <class T>
void ReadRanged(tinyxml2::XMLElement const* element, char const* attribute, T low, T high, T& out,
                std::string const& name)
{
    if (!element || !element->Attribute(attribute))
        return;
    T value{};
    tinyxml2::XMLError error;
    if constexpr (std::is_same_v<T, float>)
        error = element->QueryFloatAttribute(attribute, &value);
    else
        error = element->QueryIntAttribute(attribute, &value);
    if (error != tinyxml2::XML_SUCCESS || !(value >= low && value <= high)) {
        LogInfo(QString::fromStdString(name + ": " + element->Name() + " " + attribute + "=\"" +
                                       element->Attribute(attribute) + "\" ignored"),
                1);
        return;
    }
    out = value;
}

std::string PathOf(tinyxml2::XMLElement const* element)
{
    char const* path = element ? element->Attribute("path") : nullptr;
    return path ? path : std::string();
}

// Children named prefix + 1, prefix + 2, ... up to the first gap, at most `limit`.
std::deque<std::string> ReadNumbered(tinyxml2::XMLElement const* parent, char const* prefix, std::size_t limit)
{
    std::deque<std::string> out;
    for (int i = 1; out.size() < limit; ++i) {
        tinyxml2::XMLElement const* child = parent->FirstChildElement((prefix + std::to_string(i)).c_str());
        if (!child)
            break;
        out.push_back(PathOf(child));
    }
    return out;
}

void WriteNumbered(tinyxml2::XMLElement* root, char const* tag, char const* prefix,
                   std::deque<std::string> const& paths)
{
    if (paths.empty())
        return;
    tinyxml2::XMLElement* list = root->InsertNewChildElement(tag);
    int i = 1;
    for (std::string const& path : paths)
        list->InsertNewChildElement((prefix + std::to_string(i++)).c_str())->SetAttribute("path", path.c_str());
}

} // namespace

float UIScaleFromValue(float value)
{
    if (value < 1.0f)
        return 1.0f;
    if (value > 3.0f)
        return 0.33333334f;
    return 1.0f / value;
}

bool ReadConfigText(std::string const& text, std::string const& name)
{
    if (long(text.size()) > CONFIG_BYTES_MAX) {
        LogInfo(QString::fromStdString(name + " is too large to be a configuration; defaults are used"), 1);
        return false;
    }
    tinyxml2::XMLDocument doc;
    if (doc.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS) {
        LogInfo(QString::fromStdString(name + " cannot be read (" + doc.ErrorStr() + "); defaults are used"), 1);
        return false;
    }
    tinyxml2::XMLElement const* root = doc.FirstChildElement("Tessaron");
    if (!root)
        root = doc.FirstChildElement("Vellumbra");
    if (!root) {
        LogInfo(QString::fromStdString(name + " has no Vellumbra element; defaults are used"), 1);
        return false;
    }

    Settings s;
    int version = 0;
    ReadRanged(root->FirstChildElement("Version"), "value", 0, 99991231, version, name);

    if (tinyxml2::XMLElement const* fps = root->FirstChildElement("FPS")) {
        int cap = s.capFps;
        ReadRanged(fps, "cap", -1000000, 1000000, cap, name);
        s.capFps = cap != 0;
        // A period of at least 1 ms and a timer that still ticks now and then.
        ReadRanged(fps, "max", 0.1f, 1000.0f, s.fpsMax, name);
    }
    ReadRanged(root->FirstChildElement("Camera"), "type", 0, 1, s.cameraType, name);
    if (tinyxml2::XMLElement const* scale = root->FirstChildElement("UIScale")) {
        int automatic = 1;
        ReadRanged(scale, "auto", -1000000, 1000000, automatic, name);
        s.uiScaleAuto = automatic != 0;
        float value = 1.0f / s.uiScale;
        ReadRanged(scale, "value", -1e30f, 1e30f, value, name);
        s.uiScale = UIScaleFromValue(value);
    }
    ReadRanged(root->FirstChildElement("SDFIterations"), "value", 1, 1 << 16, s.sdfIterations, name);
    ReadRanged(root->FirstChildElement("SSRRays"), "value", 1, 1 << 10, s.ssrRays, name);

    if (tinyxml2::XMLElement const* paths = root->FirstChildElement("Paths")) {
        for (std::size_t i = 0; i < std::size(PATHS); ++i) {
            if (IsShaderFolder(PATHS[i].path)) {
                if (version == VERSION_SINGLE_SHADER_FOLDER) {
                    if (tinyxml2::XMLElement const* shaders = paths->FirstChildElement("Shaders"))
                        s.paths[i] = PathOf(shaders);
                    continue;
                }
                if (version < VERSION_SINGLE_SHADER_FOLDER)
                    continue;
            }
            if (tinyxml2::XMLElement const* child = paths->FirstChildElement(PATHS[i].tag))
                s.paths[i] = PathOf(child);
        }
    }
    if (tinyxml2::XMLElement const* recent = root->FirstChildElement("RecentFiles"))
        s.recent = ReadNumbered(recent, "File", RECENT_FILES_MAX);
    if (tinyxml2::XMLElement const* assets = root->FirstChildElement("AssetFolders"))
        s.assets = ReadNumbered(assets, "Folder", 1024);

    s.apply();
    return true;
}

void LoadConfigFile()
{
    std::ifstream in(CONFIG_FILE, std::ios::binary);
    if (!in)
        return;
    // Read at most one byte past the limit: enough to tell an oversized file, never more.
    std::string text(std::size_t(CONFIG_BYTES_MAX) + 1, '\0');
    in.read(text.data(), std::streamsize(text.size()));
    text.resize(std::size_t(in.gcount()));
    ReadConfigText(text, CONFIG_FILE);
}

std::string ConfigText()
{
    tinyxml2::XMLDocument doc;
    doc.InsertEndChild(doc.NewDeclaration());
    tinyxml2::XMLElement* root = doc.NewElement("Vellumbra");
    doc.InsertEndChild(root);
    root->InsertNewChildElement("Version")->SetAttribute("value", CONFIG_VERSION);
    tinyxml2::XMLElement* fps = root->InsertNewChildElement("FPS");
    fps->SetAttribute("cap", int(CAP_FPS));
    fps->SetAttribute("max", FPS_MAX);
    root->InsertNewChildElement("Camera")->SetAttribute("type", CAMERA_TYPE);
    tinyxml2::XMLElement* scale = root->InsertNewChildElement("UIScale");
    scale->SetAttribute("auto", int(UI_SCALE_AUTO));
    scale->SetAttribute("value", 1.0f / UI_SCALE);
    root->InsertNewChildElement("SDFIterations")->SetAttribute("value", SDF_ITERATIONS);
    SSR_RAYS = Rendering::instance().ssrRays; // as the render settings left it
    root->InsertNewChildElement("SSRRays")->SetAttribute("value", SSR_RAYS);
    tinyxml2::XMLElement* paths = root->InsertNewChildElement("Paths");
    for (PathEntry const& entry : PATHS)
        paths->InsertNewChildElement(entry.tag)->SetAttribute("path", entry.path->c_str());
    WriteNumbered(root, "RecentFiles", "File", RECENT_FILES);
    WriteNumbered(root, "AssetFolders", "Folder", ASSET_FOLDERS);

    tinyxml2::XMLPrinter printer;
    doc.Print(&printer);
    return printer.CStr();
}

bool SaveConfigFile()
{
    std::ofstream out(CONFIG_FILE, std::ios::binary | std::ios::trunc);
    out << ConfigText();
    if (!out) {
        LogInfo(QString::fromStdString("Cannot write " + CONFIG_FILE), 2);
        return false;
    }
    return true;
}

void AddRecentFile(std::string const& path)
{
    auto found = std::find(RECENT_FILES.begin(), RECENT_FILES.end(), path);
    if (found != RECENT_FILES.end())
        RECENT_FILES.erase(found);
    if (int(RECENT_FILES.size()) >= RECENT_FILES_MAX)
        RECENT_FILES.resize(RECENT_FILES_MAX - 1);
    RECENT_FILES.push_front(path);
}

} // namespace vel
