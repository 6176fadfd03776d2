// IFile: the input stream of scene and object files, read by raw copies with explicit
// bounds. Every read reports success, so a truncated or corrupt file ends in a clear
// message from its reader instead of garbage or a crash.
//
// It reads a file, or a byte buffer (for element records and malformed-input tests).
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <string>
#include <type_traits>

class QIODevice;

namespace vel {

class IFile {
public:
    explicit IFile(QString const& path);        // a file or ":/" resource, read-only
    explicit IFile(QByteArray const& bytes);     // a copy of the bytes
    ~IFile();

    bool isOpen() const;
    bool atEnd() const;
    long long pos() const;
    long long size() const;

    // Reads up to `length` bytes; returns the number read (as QDataStream::readRawData does).
    int readRawData(char* data, int length);
    // Skips `length` bytes; false when the stream has fewer left.
    bool skipRawData(long long length);
    bool seek(long long position);

    template <class T>
    bool readValue(T& value)
    {
        static_assert(std::is_trivially_copyable<T>::value, "raw copies only");
        return readRawData(reinterpret_cast<char*>(&value), int(sizeof(T))) == int(sizeof(T));
    }
    // A 4-byte length and the bytes; refuses negative lengths and lengths beyond the stream
    // or beyond `maxLength`, so a corrupt length never allocates gigabytes.
    bool readString(std::string& text, int maxLength = 1 << 24);

private:
    std::unique_ptr<QIODevice> device;
};

} // namespace vel
