// TextureManager: every texture the scene and the system use, by path or key, loaded once.
//
// File textures are keyed by their path; the system's own textures by "?" + a name, so that
// they can never meet a file path. A request for a known key returns the stored texture and
// ignores the wrap and filter asked for: the first request wins.
#pragma once

#include "Memory/Shared.h"
#include "Memory/Singleton.h"
#include "OpenGL/Texture.h"

#include <string>
#include <unordered_map>

namespace vel {

class TextureManager : public Singleton<TextureManager> {
    friend class Singleton<TextureManager>;

public:
    std::unordered_map<std::string, Shared<Texture>> textures; // path or "?" + name -> texture
    // Folder of the scene file being written: file paths are saved relative to it ("" keeps them).
    std::string sceneFolder;

    // The texture of a file: ".HDR" an Environment of 256 with 6 levels, ".GIF" an animation, anything
    // else a Texture2D. An empty path asks for the missing-texture image. A file that can't
    // be loaded (or a directory) yields a null Shared and is not stored.
    Shared<Texture> AddFile(std::string const& path, int wrap = GL_REPEAT, int filter = GL_LINEAR);
    // Stores a texture of the system under "?" + name; an existing one is returned instead.
    Shared<Texture> AddInternal(Shared<Texture> const& texture, std::string const& name);

    // The path under which a scene refers to `texture`: its key, relative to sceneFolder
    // unless it is a resource (":") or internal ("?"); its name when it is not stored here.
    std::string ScenePath(Texture const* texture) const;

    // Drops every texture with its GL object: call while the context is current.
    void clear() { textures.clear(); }

private:
    TextureManager() = default;
};

} // namespace vel
