// The configuration file as it may be found in a working folder: any bytes, read as the
// settings document. A refusal leaves the settings of the moment as they were.
#include "mainwindow/ConfigFile.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    vel::ReadConfigText(std::string(reinterpret_cast<char const*>(data), size), "vellumbra.xml");
    return 0;
}
