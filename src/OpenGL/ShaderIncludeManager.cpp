#include "OpenGL/ShaderIncludeManager.h"

#include "Core/Communicate.h"
#include "OpenGL/ShaderManager.h"

#include <QFileInfo>

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

bool ShaderIncludeManager::ReadInclude(std::string const& path, std::string& text) const
{
    QString const name = QString::fromStdString(path);
    if (name.isEmpty())
        return false;
    if (!name.startsWith(QLatin1String(":/"))) {
        QFileInfo info(name);
        if (!info.exists())
            return false; // left for the GLSL compiler to name
        QString const file = info.canonicalFilePath();
        bool inside = false;
        for (std::string const& folder : folders) {
            QString root = QFileInfo(QString::fromStdString(folder)).canonicalFilePath();
            if (root.isEmpty())
                continue; // a folder that does not exist holds nothing
            if (!root.endsWith(QLatin1Char('/')))
                root += QLatin1Char('/'); // "/inc" must not admit "/include/x"
            inside = inside || file.startsWith(root);
        }
        if (!inside || !info.isFile()) {
            LogInfo(QString("Shader include '%1' refused: only files inside the include folders are read.")
                        .arg(name),
                    2);
            return false;
        }
    }
    return ShaderManager::ReadFile(path, text);
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
    std::string text;
    ReadInclude(name, text);
    // An unreadable file is not remembered: it may appear later (a user saving a new header).
    if (!text.empty())
        files.emplace(name, text);
    return text;
}

} // namespace vel
