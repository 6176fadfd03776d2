// The shader layer XML file as it may come from anywhere: any bytes, read as a layer. A
// refusal is a log message and a null layer; nothing is compiled (no GL context here).
#include "OpenGL/ShaderLayer.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    vel::ShaderLayer::FromXML(std::string(reinterpret_cast<char const*>(data), size), "fuzz.xml");
    return 0;
}
