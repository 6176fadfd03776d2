// ShaderIncludeManager: the texts that user shaders can `#include` by name.
//
// A name is either a file path (the shipped headers under ":/shaders/Include/", or any file),
// read once and kept, or a common include of the scene: "?Common n", whose last token is the
// index into `common`. Built-in shaders do not come here: Shader::compile reads their
// includes itself.
#pragma once

#include "Memory/Singleton.h"

#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class ShaderIncludeManager : public Singleton<ShaderIncludeManager> {
    friend class Singleton<ShaderIncludeManager>;

public:
    std::unordered_map<std::string, std::string> files; // path -> text, of files read once
    std::deque<std::string> common;                     // the scene's common includes

    // The paths of the shipped include files, registered at construction.
    static std::vector<std::string> const& IncludeFiles();

    // The text of `name`: "" for an empty name, an unknown common index or an unreadable file.
    std::string AddFile(std::string const& name);
    // The number in the last blank-separated token of `name`, or -1.
    static int IndexOf(std::string const& name);

private:
    ShaderIncludeManager();
};

} // namespace vel
