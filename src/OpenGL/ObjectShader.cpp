#include "OpenGL/ObjectShader.h"

#include "Scene/IFile.h"
#include "Scene/OFile.h"

#include <algorithm>

namespace vel {

std::vector<std::string> const ObjectShader::Titles = {
    "VertexIOFunctionsCode", "VertexMainLocalCode", "VertexMainWorldCode",
    "FragmentIOFunctionsCode", "FragmentMainCode",
};
bool ObjectShader::ActiveAll = true;
std::map<std::string, std::string> ObjectShader::Loaded;
std::vector<int> ObjectShader::LoadedfIncludes;
std::vector<int> ObjectShader::LoadedvIncludes;

ObjectShader::~ObjectShader() = default;

namespace {

constexpr int FORMAT = 1;
constexpr int MAX_CODE = 1 << 22;  // 4 MiB of GLSL per fragment
constexpr int MAX_LIST = 1 << 16;  // keys, includes or samplers

bool readList(IFile& in, std::vector<int>& list)
{
    int n = 0;
    if (!in.readValue(n) || n < 0 || n > MAX_LIST || n > in.left() / 4)
        return false;
    list.resize(std::size_t(n));
    return in.readValues(list.data(), n);
}

} // namespace

int ObjectShader::DataSize() const
{
    int size = 4 + 4 + 1 + 4 + 4 * int(vIncludes.size()) + 4 + 4 * int(fIncludes.size()) + 4 + 4 * int(Titles.size());
    // Most objects have no code: a scene of many tools should not search for it by title.
    for (auto const& [title, text] : code)
        if (std::find(Titles.begin(), Titles.end(), title) != Titles.end())
            size += int(text.size());
    return size;
}

void ObjectShader::DataWrite(OFile& out) const
{
    out.writeValue(FORMAT);
    out.writeValue(int(0)); // program keys: none are kept yet
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
    out.writeValue(int(0)); // sampler references: none are kept yet
}

bool ObjectShader::DataRead(IFile& in)
{
    int format = 0;
    std::vector<int> keys;
    if (!in.readValue(format) || format != FORMAT || !readList(in, keys))
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
    for (int i = 0; i < samplers; ++i) {
        int unit = 0;
        std::string path;
        if (!in.readValue(unit) || !in.readString(path, 4096))
            return false;
    }
    code = std::move(read);
    active = on;
    vIncludes = std::move(v);
    fIncludes = std::move(f);
    dirty = true;
    return true;
}

} // namespace vel
