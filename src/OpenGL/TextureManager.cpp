#include "OpenGL/TextureManager.h"

#include "Core/Assert.h"
#include "OpenGL/Environment.h"
#include "OpenGL/GeneratedImages.h"
#include "OpenGL/LogMsg.h"
#include "OpenGL/Texture2D.h"
#include "OpenGL/Texture3D.h"

#include <QDir>
#include <QFileInfo>
#include <QString>

namespace vel {

namespace {

// The extension from the last ".", upper-cased: ".HDR".
std::string UpperExtension(std::string const& path)
{
    size_t dot = path.rfind('.');
    return dot == std::string::npos ? std::string() : QString::fromStdString(path.substr(dot)).toUpper().toStdString();
}

} // namespace

Shared<Texture> TextureManager::AddFile(std::string const& requested, int wrap, int filter)
{
    std::string path = requested;
    if (path.empty()) {
        path = MISSING_TEXTURE_PATH;
        wrap = GL_REPEAT;
        filter = GL_LINEAR;
    }
    auto found = textures.find(path);
    if (found != textures.end())
        return found->second;
    // A directory reads as no image at all; say so instead of letting a decoder guess.
    if (QFileInfo(QString::fromStdString(path)).isDir()) {
        logmsg("ERROR TextureManager::AddFile directory " + path);
        return {};
    }
    std::string extension = UpperExtension(path);
    Shared<Texture> texture;
    if (extension == ".HDR")
        texture = Shared<Texture>(new Environment(path, 256, 6));
    else if (extension == ".GIF")
        texture = Shared<Texture>(new Texture3D(path, true));
    else
        texture = Shared<Texture>(new Texture2D(path, true, wrap, filter));
    if (texture->loadFailed)
        return {};
    textures.emplace(path, texture);
    return texture;
}

Shared<Texture> TextureManager::AddInternal(Shared<Texture> const& texture, std::string const& name)
{
    VEL_ASSERT(!name.empty());
    auto stored = textures.emplace("?" + name, texture);
    return stored.first->second;
}

std::string TextureManager::ScenePath(Texture const* texture) const
{
    for (auto const& entry : textures) {
        if (entry.second.get() != texture)
            continue;
        std::string const& key = entry.first;
        if (key.empty() || key[0] == ':' || key[0] == '?' || sceneFolder.empty())
            return key;
        return QDir(QString::fromStdString(sceneFolder)).relativeFilePath(QString::fromStdString(key)).toStdString();
    }
    return texture->name;
}

} // namespace vel
