// Shader text as a user writes it: simplified, then split into stages with includes and
// defines, as a compile would do before handing it to GL (no GL call is made).
#include "OpenGL/Shader.h"
#include "OpenGL/SimplifiedString.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    std::string text(reinterpret_cast<char const*>(data), size);
    // Everything after the first NUL, if any, is a list of defines.
    std::string defines;
    size_t nul = text.find('\0');
    if (nul != std::string::npos) {
        defines = text.substr(nul + 1);
        text.resize(nul);
    }
    vel::Shader::Parse(vel::SimplifiedString(text), defines, defines);
    return 0;
}
