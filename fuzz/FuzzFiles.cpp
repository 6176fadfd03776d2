#include "FuzzFiles.h"

#include <QTemporaryDir>

#include <cstdio>

namespace vel::fuzz {

std::string const& Folder()
{
    static QTemporaryDir dir;
    static std::string path = dir.path().toStdString();
    return path;
}

std::string WriteInput(std::string const& name, uint8_t const* data, size_t size)
{
    std::string path = Folder() + "/" + name;
    if (std::FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    return path;
}

} // namespace vel::fuzz
