// One image kind, chosen at build time by its file extension (VEL_FUZZ_EXTENSION, e.g.
// ".png"): the input is read by the reader the texture manager picks for that name.
#include "FuzzFiles.h"

#include "OpenGL/TextureManager.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    std::string path = vel::fuzz::WriteInput(std::string("input") + VEL_FUZZ_EXTENSION, data, size);
    vel::TextureManager& manager = vel::TextureManager::instance();
    manager.AddFile(path);
    manager.clear();
    return 0;
}
