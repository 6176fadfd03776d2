#include "Scene/IFile.h"

#include <QBuffer>
#include <QFile>

namespace vel {

IFile::IFile(QString const& path)
    : device(std::make_unique<QFile>(path))
{
    device->open(QIODevice::ReadOnly);
}

IFile::IFile(QByteArray const& bytes)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    device = std::move(buffer);
}

IFile::~IFile() = default;

bool IFile::isOpen() const
{
    return device->isOpen();
}

bool IFile::atEnd() const
{
    return !device->isOpen() || device->atEnd();
}

long long IFile::pos() const
{
    return device->pos();
}

long long IFile::size() const
{
    return device->size();
}

int IFile::readRawData(char* data, int length)
{
    if (!device->isOpen() || length < 0)
        return -1;
    return int(device->read(data, length));
}

bool IFile::skipRawData(long long length)
{
    // Compared as what is left, so that a length near the largest value cannot overflow.
    if (!device->isOpen() || length < 0 || length > size() - pos())
        return false;
    return device->seek(pos() + length);
}

bool IFile::seek(long long position)
{
    if (!device->isOpen() || position < 0 || position > size())
        return false;
    return device->seek(position);
}

bool IFile::readString(std::string& text, int maxLength)
{
    int length = 0;
    if (!readValue(length) || length < 0 || length > maxLength || pos() + length > size())
        return false;
    text.resize(size_t(length));
    return length == 0 || readRawData(text.data(), length) == length;
}

} // namespace vel
