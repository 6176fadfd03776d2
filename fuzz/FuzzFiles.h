// The image readers take paths, not bytes: a fuzz input is written to a file of the wanted
// name in a folder private to the process. The working folder stays: libFuzzer reads its
// inputs by the paths it was given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vel::fuzz {

// The private folder (made on first use).
std::string const& Folder();

// Writes `size` bytes to `name` in the private folder; returns its path.
std::string WriteInput(std::string const& name, uint8_t const* data, size_t size);

} // namespace vel::fuzz
