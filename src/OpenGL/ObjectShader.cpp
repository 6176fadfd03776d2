#include "OpenGL/ObjectShader.h"

#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/Texture.h"
#include "OpenGL/TextureManager.h"
#include "Scene/Elements/TRenderState.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"

#include <algorithm>
#include <tuple>

namespace vel {

// ------------------------------------------------------------------------------------------
// Keys and class-wide state
// ------------------------------------------------------------------------------------------

std::vector<std::string> const ObjectShader::Titles = {
    "VertexIOFunctionsCode", "VertexMainLocalCode", "VertexMainWorldCode",
    "FragmentIOFunctionsCode", "FragmentMainCode",
};
bool ObjectShader::ActiveAll = true;
std::map<std::string, std::string> ObjectShader::Loaded;
std::vector<int> ObjectShader::LoadedfIncludes;
std::vector<int> ObjectShader::LoadedvIncludes;

namespace {
constexpr size_t MAX_KEYS = 64; // kinds of draw an object is asked for; more is a broken file
} // namespace

bool ShaderCodeKey::operator<(ShaderCodeKey const& o) const
{
    return std::tie(kind, dataType, style, SKIN_SNAKE, RENDER_FAST, USE_NORMAL) <
           std::tie(o.kind, o.dataType, o.style, o.SKIN_SNAKE, o.RENDER_FAST, o.USE_NORMAL);
}

ObjectShader::ObjectShader()
{
    active = false;
    autoCompile = false;
}

ObjectShader::ObjectShader(ObjectShader const& other)
    : ShaderCode(other)
    , code(other.code)
    , vIncludes(other.vIncludes)
    , fIncludes(other.fIncludes)
    , samplerPaths(other.samplerPaths)
{
}

ObjectShader& ObjectShader::operator=(ObjectShader const& other)
{
    if (this == &other)
        return *this;
    ShaderCode::operator=(other);
    code = other.code;
    vIncludes = other.vIncludes;
    fIncludes = other.fIncludes;
    samplerPaths = other.samplerPaths;
    programs.clear();
    keys.clear();
    tried.clear();
    return *this;
}

ObjectShader::~ObjectShader() = default;

bool ObjectShader::KeyFor(TRenderState const& state, int dataType, ShaderCodeKey& key)
{
    Rendering const& r = Rendering::instance();
    if ((state.kind != 0 && state.kind != 1 && state.kind != 6) || !r.ObjectShadersActive)
        return false;
    key = ShaderCodeKey();
    key.kind = state.kind;
    key.dataType = dataType == 1 ? 1 : 0;
    key.style = r.style;
    key.RENDER_FAST = r.fast;
    // SKIN_SNAKE is for a tool bent along a snake, which will set it for its draws.
    return true;
}

bool ObjectShader::hasCode() const
{
    for (auto const& [title, text] : code)
        if (!text.empty())
            return true;
    return false;
}

void ObjectShader::setCode(std::string const& title, std::string const& text)
{
    code[title] = text;
    dirty = true;
}

// ------------------------------------------------------------------------------------------
// Program generation
// ------------------------------------------------------------------------------------------

namespace {

std::vector<std::string> CommonNames(std::vector<int> const& indices)
{
    std::vector<std::string> names;
    for (int i : indices)
        names.push_back("?Common " + std::to_string(i));
    return names;
}

} // namespace

CodeListing ObjectShader::GenerateCustomShaderFullCode(bool vertex, ShaderCodeKey const& key) const
{
    CodeListing out;
    out.files = Titles;
    auto fragment = [&](int title) {
        auto found = code.find(Titles[size_t(title)]);
        if (found != code.end())
            out.user(found->second, title);
    };
    bool const renderPbr = Rendering::hasMaterials(key.style) && key.kind != 6;
    bool const dataPbr = key.dataType == 1 && key.kind != 6;
    bool const normals = key.USE_NORMAL && !key.RENDER_FAST;
    std::string head = "#version 330 core\n";
    if (renderPbr)
        head += "#define RENDER_PBR\n";
    if (dataPbr)
        head += "#define DATA_PBR\n";
    if (key.RENDER_FAST)
        head += "#define RENDER_FAST\n";
    if (key.SKIN_SNAKE)
        head += "#define SKIN_SNAKE\n";
    if (key.USE_NORMAL)
        head += "#define USE_NORMAL\n";
    head += "#ifdef DATA_PBR\n#include \":/shaders/Include/MaterialUtils.glsl\"\n#endif\n";
    out.generated(head);
    out.generated(IncludesText(CommonNames(vertex ? vIncludes : fIncludes)));
    if (vertex) {
        out.generated("uniform float iTime;\n"
                      "uniform vec3 iRotationAxisMultiplier;\n"
                      "uniform mat4x3 iWorldToModelMatrix;\n"
                      "uniform vec3 iOBB_center;\n"
                      "uniform vec3 iOBB_half_size;\n"
                      "uniform ivec4 iObjectItemsElement;\n"
                      "uniform int iInstances;\n"
                      "#define LOCAL 0\n#define WORLD 1\n#define VIEW 2\n"
                      "uniform mat4x3 iMatrices[3];\n"
                      "uniform mat3 iNormalMatrices[3];\n"
                      "uniform mat4 iProjViewMatrix;\n"
                      "uniform vec4 iObjectColorAlpha;\n"
                      "uniform vec4 iObjectLightThick;\n"
                      "uniform vec2 iObjectRoughMetal;\n"
                      "out vec3 lPosition;\nout vec3 wPosition;\nout vec3 lNormal;\nout vec3 wNormal;\n"
                      "smooth out vec3 vNormal;\nflat out ivec3 vComponentPatchFace;\n"
                      "smooth out vec4 vColorAlpha;\nsmooth out vec4 vLightThick;\nsmooth out vec2 vRoughMetal;\n"
                      "layout(location = 0) in vec3 iPosition;\n"
                      "layout(location = 1) in ivec3 iComponentPatchFace;\n");
        if (dataPbr)
            out.generated("layout(location = 2) in uvec4 iMaterial;\n");
        if (normals)
            out.generated(dataPbr ? "layout(location = 3) in vec4 iNormal;\n" : "layout(location = 2) in vec4 iNormal;\n");
        // SKIN_SNAKE: the place of the chain's bones (iClosed, iBonesMax, the bones sampler,
        // BonesTextureWidth, and tex_coords, loadBoneMatrix, skin of "Mesh/vMeshSnakeRender"),
        // and of the skin() call on lPosition and lNormal below. Snakes don't exist yet: no
        // draw asks for such a key (KeyFor leaves it false), so the define stays unused.
        fragment(0);
        out.generated("\nvoid main()\n{\n\tvComponentPatchFace = iComponentPatchFace;\n");
        out.generated(dataPbr ? "\tDecodeMaterialNormalizedUnsigned(iMaterial, vColorAlpha, vLightThick, vRoughMetal);\n"
                                "\tvColorAlpha *= iObjectColorAlpha;\n\tvLightThick += iObjectLightThick;\n"
                                "\tvRoughMetal += iObjectRoughMetal;\n"
                              : "\tvColorAlpha = iObjectColorAlpha;\n\tvLightThick = iObjectLightThick;\n"
                                "\tvRoughMetal = iObjectRoughMetal * 0.5 + 0.5;\n");
        out.generated(normals ? "\tvec3 n = iNormal.xyz;\n" : "\tvec3 n = vec3(0.0, 0.0, 1.0);\n");
        out.generated("\tlPosition = iMatrices[LOCAL] * vec4(iPosition, 1);\n\tlNormal = iNormalMatrices[LOCAL] * n;\n");
        fragment(1);
        out.generated("\twPosition = iMatrices[WORLD] * vec4(lPosition, 1);\n\twNormal = iNormalMatrices[WORLD] * lNormal;\n");
        fragment(2);
        out.generated("\tgl_Position = iProjViewMatrix * vec4(wPosition, 1);\n"
                      "\tvNormal = iNormalMatrices[VIEW] * wNormal;\n}\n");
        return out;
    }
    out.generated("uniform ivec4 iObjectItemsElement;\n"
                  "flat in ivec3 vComponentPatchFace;\nsmooth in vec3 vNormal;\n"
                  "smooth in vec4 vColorAlpha;\nsmooth in vec4 vLightThick;\nsmooth in vec2 vRoughMetal;\n"
                  "layout(location = 0) out ivec4 oObjectItemsElement;\n"
                  "layout(location = 1) out ivec3 oComponentPatchFace;\n"
                  "layout(location = 2) out vec4 oNormal;\n"
                  "#ifdef RENDER_PBR\n"
                  "layout(location = 3) out vec2 oRoughMetal;\n"
                  "layout(location = 4) out vec4 oColorAlpha;\n"
                  "layout(location = 5) out vec4 oLightThick;\n"
                  "#endif\n"
                  "uniform vec3 iResolution;\n"
                  "uniform mat4 iViewToScreen;\nuniform mat4 iScreenToView;\n"
                  "uniform mat4 iWorldToScreen;\nuniform mat4 iScreenToWorld;\n"
                  "uniform mat3 iWorldToScreenRotation;\nuniform mat3 iScreenToWorldRotation;\n"
                  "in vec3 lPosition;\nin vec3 wPosition;\nin vec3 lNormal;\nin vec3 wNormal;\n"
                  "uniform vec2 iRenderFlags;\n");
    out.generated(SamplerLines());
    fragment(3);
    out.generated("\nvoid main()\n{\n"
                  "\toObjectItemsElement = iObjectItemsElement;\n"
                  "\toComponentPatchFace = vComponentPatchFace;\n"
                  "\tvec3 n = normalize(vNormal);\n"
                  "\toNormal = gl_FrontFacing ? vec4(n, iRenderFlags.x) : vec4(-n, iRenderFlags.y);\n"
                  "#ifdef RENDER_PBR\n"
                  "\toRoughMetal = clamp(vRoughMetal, 0.0, 1.0);\n"
                  "\toColorAlpha = vColorAlpha;\n"
                  "\toLightThick = vLightThick;\n"
                  "#endif\n");
    fragment(4);
    out.generated("}\n");
    return out;
}

CodeListing ObjectShader::FullCode(ShaderCodeKey const& key) const
{
    CodeListing full;
    full.files = Titles;
    for (bool vertex : {true, false}) {
        full.generated(vertex ? "##VERTEX\n" : "##FRAGMENT\n");
        CodeListing stage = GenerateCustomShaderFullCode(vertex, key);
        full.lines.insert(full.lines.end(), stage.lines.begin(), stage.lines.end());
        full.origins.insert(full.origins.end(), stage.origins.begin(), stage.origins.end());
    }
    return full;
}

// ------------------------------------------------------------------------------------------
// Compile and use
// ------------------------------------------------------------------------------------------

bool ObjectShader::compile(ShaderCodeKey const& key)
{
    tried.insert(key);
    if (std::find(keys.begin(), keys.end(), key) == keys.end() && keys.size() < MAX_KEYS)
        keys.push_back(key);
    // Textures named by a loaded file are opened here, on the GL thread.
    for (auto const& [slot, path] : samplerPaths)
        if (slot >= 0 && slot < SAMPLERS)
            samplers[size_t(slot)] = TextureManager::instance().AddFile(path);
    samplerPaths.clear();
    std::string const name = "ObjectShader." + std::to_string(key.kind) + "." + std::to_string(key.dataType) + "." +
                             std::to_string(key.style);
    Shared<Shader> program = build(name, FullCode(key));
    if (!program)
        return false; // the key's last good program stays
    programs[key] = program;
    return true;
}

Shader* ObjectShader::use(ShaderCodeKey const& key)
{
    if (!ActiveAll || !active || !hasCode())
        return nullptr;
    if (dirty) {
        // The keys with a program compile anew from the new code; each keeps its program
        // until then. Others are tried again when they are asked for.
        dirty = false;
        tried.clear();
        std::vector<ShaderCodeKey> made;
        for (auto const& entry : programs)
            made.push_back(entry.first);
        for (ShaderCodeKey const& k : made)
            compile(k);
    }
    if (tried.find(key) == tried.end())
        compile(key);
    return program(key);
}

Shader* ObjectShader::program(ShaderCodeKey const& key) const
{
    if (!ActiveAll || !active)
        return nullptr;
    auto found = programs.find(key);
    return found == programs.end() ? nullptr : found->second.get();
}

// ------------------------------------------------------------------------------------------
// File record
// ------------------------------------------------------------------------------------------

namespace {

constexpr int FORMAT = 1;
constexpr int MAX_CODE = 1 << 22;  // 4 MiB of GLSL per fragment
constexpr int MAX_LIST = 1 << 16;  // key words, includes or samplers
constexpr int MAX_PATH = 4096;

bool readList(IFile& in, std::vector<int>& list)
{
    int n = 0;
    if (!in.readValue(n) || n < 0 || n > MAX_LIST || n > in.left() / 4)
        return false;
    list.resize(std::size_t(n));
    return in.readValues(list.data(), n);
}

// The sampler references a record holds: slots with a texture that has a path.
std::vector<std::pair<int, std::string>> References(ObjectShader const& s)
{
    std::vector<std::pair<int, std::string>> refs = s.samplerPaths;
    for (int i = 0; i < ShaderCode::SAMPLERS; ++i)
        if (s.samplers[size_t(i)] && !s.samplers[size_t(i)]->name.empty())
            refs.emplace_back(i, s.samplers[size_t(i)]->name);
    return refs;
}

} // namespace

int ObjectShader::DataSize() const
{
    int size = 4 + 4 + 16 * int(keys.size()) + 1 + 4 + 4 * int(vIncludes.size()) + 4 + 4 * int(fIncludes.size()) +
               4 + 4 * int(Titles.size());
    // Most objects have no code: a scene of many tools should not search for it by title.
    for (auto const& [title, text] : code)
        if (std::find(Titles.begin(), Titles.end(), title) != Titles.end())
            size += int(text.size());
    if (has_samplers() || !samplerPaths.empty())
        for (auto const& [slot, path] : References(*this))
            size += 8 + int(path.size());
    return size;
}

void ObjectShader::DataWrite(OFile& out) const
{
    out.writeValue(FORMAT);
    out.writeValue(int(4 * keys.size()));
    for (ShaderCodeKey const& k : keys) {
        out.writeValue(k.kind);
        out.writeValue(k.dataType);
        out.writeValue(k.style);
        out.writeValue(int((k.SKIN_SNAKE ? 1 : 0) | (k.RENDER_FAST ? 2 : 0) | (k.USE_NORMAL ? 4 : 0)));
    }
    for (std::string const& title : Titles) {
        auto found = code.empty() ? code.end() : code.find(title);
        out.writeString(found == code.end() ? std::string() : found->second);
    }
    out.writeValue(active);
    for (std::vector<int> const* list : {&vIncludes, &fIncludes}) {
        out.writeValue(int(list->size()));
        for (int i : *list)
            out.writeValue(i);
    }
    std::vector<std::pair<int, std::string>> const refs =
        has_samplers() || !samplerPaths.empty() ? References(*this) : std::vector<std::pair<int, std::string>>();
    out.writeValue(int(refs.size()));
    for (auto const& [slot, path] : refs) {
        out.writeValue(slot);
        out.writeString(path);
    }
}

bool ObjectShader::DataRead(IFile& in)
{
    int format = 0;
    std::vector<int> words;
    if (!in.readValue(format) || format != FORMAT || !readList(in, words))
        return false;
    std::map<std::string, std::string> read;
    for (std::string const& title : Titles) {
        std::string text;
        if (!in.readString(text, MAX_CODE))
            return false;
        if (!text.empty())
            read[title] = std::move(text);
    }
    bool on = false;
    std::vector<int> v, f;
    int samplers = 0;
    if (!in.readValue(on) || !readList(in, v) || !readList(in, f) || !in.readValue(samplers) || samplers < 0 ||
        samplers > MAX_LIST)
        return false;
    std::vector<std::pair<int, std::string>> refs;
    for (int i = 0; i < samplers; ++i) {
        int unit = 0;
        std::string path;
        if (!in.readValue(unit) || !in.readString(path, MAX_PATH))
            return false;
        if (unit >= 0 && unit < SAMPLERS && !path.empty())
            refs.emplace_back(unit, std::move(path));
    }
    code = std::move(read);
    active = on;
    vIncludes = std::move(v);
    fIncludes = std::move(f);
    samplerPaths = std::move(refs);
    keys.clear();
    for (size_t i = 0; i + 3 < words.size() && keys.size() < MAX_KEYS; i += 4) {
        ShaderCodeKey k;
        k.kind = words[i];
        k.dataType = words[i + 1];
        k.style = words[i + 2];
        k.SKIN_SNAKE = words[i + 3] & 1;
        k.RENDER_FAST = words[i + 3] & 2;
        k.USE_NORMAL = words[i + 3] & 4;
        keys.push_back(k);
    }
    programs.clear();
    tried.clear();
    dirty = true;
    return true;
}

} // namespace vel
