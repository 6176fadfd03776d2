// OFile: the output stream of scene and object files. Numbers are written by raw memory copy
// (little-endian on every supported machine), strings as a 4-byte length and the bytes.
//
// It writes to a binary file, or to memory when built without a path, so that element
// records can be checked byte for byte without touching the disk.
#pragma once

#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>

namespace vel {

class OFile : public std::ostream {
public:
    OFile();                                  // in memory
    explicit OFile(std::string const& path); // binary file, truncated
    ~OFile() override;

    bool isOpen() const { return toFile ? file.is_open() : true; }
    // The bytes written so far, for an in-memory stream.
    std::string bytes() const { return memory.str(); }

    // Straight to the buffer: a file is written in millions of small values, and the
    // stream's per-call guard cost more than the copy.
    template <class T>
    void writeValue(T const& value)
    {
        static_assert(std::is_trivially_copyable<T>::value, "raw copies only");
        std::streambuf* buffer = rdbuf();
        if (!buffer || buffer->sputn(reinterpret_cast<char const*>(&value), sizeof(T)) != std::streamsize(sizeof(T)))
            setstate(std::ios::badbit);
    }
    void writeString(std::string const& text);

private:
    bool toFile = false;
    std::filebuf file;
    std::stringbuf memory;
};

} // namespace vel
