#include "OpenGL/ShaderIncludeManager.h"

#include "OpenGL/ShaderManager.h"

#include <cstdlib>

namespace vel {

ShaderIncludeManager::ShaderIncludeManager()
{
    for (std::string const& path : IncludeFiles())
        AddFile(path);
}

std::vector<std::string> const& ShaderIncludeManager::IncludeFiles()
{
    static std::vector<std::string> const paths = {
        ShaderManager::Path("Include/RenderFlags"), ShaderManager::Path("Include/MaterialUtils"),
        ShaderManager::Path("Include/Math"), ShaderManager::Path("Include/Graphics"),
        ShaderManager::Path("Include/hg_sdf")};
    return paths;
}

int ShaderIncludeManager::IndexOf(std::string const& name)
{
    size_t end = name.find_last_not_of(' ');
    if (end == std::string::npos)
        return -1;
    size_t begin = name.find_last_of(' ', end);
    begin = begin == std::string::npos ? 0 : begin + 1;
    std::string token = name.substr(begin, end + 1 - begin);
    char* stop = nullptr;
    long value = std::strtol(token.c_str(), &stop, 10);
    if (token.empty() || *stop != '\0')
        return -1;
    return int(value);
}

std::string ShaderIncludeManager::AddFile(std::string const& name)
{
    if (name.empty())
        return {};
    if (name[0] == '?') {
        int index = IndexOf(name);
        if (index < 0 || index >= int(common.size()))
            return {};
        return common[size_t(index)];
    }
    auto found = files.find(name);
    if (found != files.end())
        return found->second;
    std::string text = ShaderManager::ReadFile(name);
    // An unreadable file is not remembered: it may appear later (a user saving a new header).
    if (!text.empty())
        files.emplace(name, text);
    return text;
}

} // namespace vel
