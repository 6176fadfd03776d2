// The mesh record of scene files: the first byte picks the file version the record is read
// as (each version has its own layout), the rest is the record.
#include "FuzzCheck.h"

#include "Scene/IFile.h"

#include <QByteArray>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size == 0)
        return 0;
    static int const versions[] = {20180604, 20180605, 20200406, 20211202, vel::Mesh::FILE_VERSION_CURRENT};
    int version = versions[data[0] % (sizeof(versions) / sizeof(versions[0]))];
    vel::IFile in(QByteArray(reinterpret_cast<char const*>(data + 1), int(size - 1)));
    vel::Mesh mesh;
    mesh.DataRead(in, version);
    vel::fuzz::CheckMesh(mesh);
    return 0;
}
