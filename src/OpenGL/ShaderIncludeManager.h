// ShaderIncludeManager: the texts that user shaders can `#include` by name.
//
// A name is either a file path, read once and kept, or a common include of the scene:
// "?Common n", whose last token is the index into `common`. Built-in shaders do not come here:
// Shader::compile reads their includes itself, through the same ReadInclude.
//
// Only ":/" resources (the shipped headers under ":/shaders/Include/") and regular files
// inside one of `folders` are read, each of at most ShaderManager::FileSizeLimit bytes: a user's source
// naming "/dev/zero" or a huge file is refused with a log message, never read.
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
    std::vector<std::string> folders;                   // folders whose files may be included

    // The paths of the shipped include files, registered at construction.
    static std::vector<std::string> const& IncludeFiles();

    // The text of `name`: "" for an empty name, an unknown common index or an unreadable file.
    std::string AddFile(std::string const& name);
    // The whole text of an include file that may be read; false, with a log message when it
    // is refused, otherwise.
    bool ReadInclude(std::string const& path, std::string& text) const;
    // The number in the last blank-separated token of `name`, or -1.
    static int IndexOf(std::string const& name);

private:
    ShaderIncludeManager();
};

} // namespace vel
