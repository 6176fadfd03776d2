// IFile: the input stream of scene and object files, read by raw copies with explicit
// bounds. Every read reports success, so a truncated or corrupt file ends in a clear
// message from its reader instead of garbage or a crash.
//
// It reads a file, or a byte buffer (for element records and malformed-input tests). A file
// is mapped into memory when the system allows (else read whole once), so that a read is a
// bounds check and a memcpy: scene files are read in millions of 4-byte values, and a
// device call per value cost more than the parsing.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

class QFile;

namespace vel {

class IFile {
public:
    explicit IFile(QString const& path);        // a file or ":/" resource, read-only
    explicit IFile(QByteArray const& bytes);     // a copy of the bytes
    ~IFile();
    IFile(IFile const&) = delete;
    IFile& operator=(IFile const&) = delete;

    bool isOpen() const { return open; }
    bool atEnd() const { return !open || position >= length; }
    long long pos() const { return position; }
    long long size() const { return length; }
    long long left() const { return length - position; }

    // Reads up to `length` bytes; returns the number read (as QDataStream::readRawData does).
    int readRawData(char* data, int length);
    // Skips `length` bytes; false when the stream has fewer left.
    bool skipRawData(long long length);
    bool seek(long long position);

    template <class T>
    bool readValue(T& value)
    {
        static_assert(std::is_trivially_copyable<T>::value, "raw copies only");
        if (!open || left() < (long long)sizeof(T))
            return false;
        if constexpr (std::is_same<T, bool>::value) {
            // Any byte but 0 is true: a file's byte is not necessarily a valid bool.
            value = bytes[position] != 0;
        } else {
            std::memcpy(&value, bytes + position, sizeof(T));
        }
        position += (long long)sizeof(T);
        return true;
    }
    // `count` values at once; false, and nothing read, when fewer are left.
    template <class T>
    bool readValues(T* values, long long count)
    {
        static_assert(std::is_trivially_copyable<T>::value, "raw copies only");
        if (!open || count < 0 || count > left() / (long long)sizeof(T))
            return false;
        if (count == 0)
            return true; // `values` may be null then (an empty vector's data)
        std::memcpy(values, bytes + position, std::size_t(count) * sizeof(T));
        position += count * (long long)sizeof(T);
        return true;
    }
    // The next `count` bytes in place, or null when fewer are left; the stream moves past them.
    char const* take(long long count);
    // A 4-byte length and the bytes; refuses negative lengths and lengths beyond the stream
    // or beyond `maxLength`, so a corrupt length never allocates gigabytes.
    bool readString(std::string& text, int maxLength = 1 << 24);

private:
    std::unique_ptr<QFile> file; // kept open while mapped
    QByteArray owned;            // the bytes when not mapped
    char const* bytes = nullptr;
    long long length = 0;
    long long position = 0;
    bool open = false;
};

} // namespace vel
