#include "Scene/IFile.h"

#include <QFile>

namespace vel {

IFile::IFile(QString const& path)
    : file(std::make_unique<QFile>(path))
{
    if (!file->open(QIODevice::ReadOnly))
        return;
    open = true;
    length = file->size();
    if (length == 0)
        return;
    // Compressed resources and special files cannot be mapped: those are read whole.
    if (uchar* mapped = file->map(0, length)) {
        bytes = reinterpret_cast<char const*>(mapped);
        return;
    }
    owned = file->readAll();
    bytes = owned.constData();
    length = owned.size();
}

IFile::IFile(QByteArray const& data)
    : owned(data)
    , bytes(owned.constData())
    , length(owned.size())
    , open(true)
{
}

IFile::~IFile() = default;

int IFile::readRawData(char* data, int count)
{
    if (!open || count < 0)
        return -1;
    long long n = count < left() ? count : left();
    if (n > 0)
        std::memcpy(data, bytes + position, std::size_t(n));
    position += n;
    return int(n);
}

bool IFile::skipRawData(long long count)
{
    // Compared as what is left, so that a length near the largest value cannot overflow.
    if (!open || count < 0 || count > left())
        return false;
    position += count;
    return true;
}

bool IFile::seek(long long to)
{
    if (!open || to < 0 || to > length)
        return false;
    position = to;
    return true;
}

char const* IFile::take(long long count)
{
    if (!open || count < 0 || count > left())
        return nullptr;
    char const* at = bytes + position;
    position += count;
    return at;
}

bool IFile::readString(std::string& text, int maxLength)
{
    int count = 0;
    if (!readValue(count) || count < 0 || count > maxLength || count > left())
        return false;
    text.assign(bytes + position, std::size_t(count));
    position += count;
    return true;
}

} // namespace vel
