#include "Scene/OFile.h"

namespace vel {

OFile::OFile()
    : std::ostream(nullptr)
{
    rdbuf(&memory);
}

OFile::OFile(std::string const& path)
    : std::ostream(nullptr)
    , toFile(true)
{
    if (file.open(path, std::ios::out | std::ios::binary | std::ios::trunc))
        rdbuf(&file);
    else
        setstate(std::ios::badbit);
}

OFile::~OFile()
{
    if (toFile)
        file.close();
}

void OFile::writeString(std::string const& text)
{
    writeValue(int(text.size()));
    write(text.data(), std::streamsize(text.size()));
}

} // namespace vel
