// The shader layer sample scenes of the start window, written by vel_generate_resources.
#pragma once

#include <string>
#include <vector>

namespace vel {

// Writes every sample scene under RESOURCES/scenes/ShaderLayers; false on a file that can't
// be written.
bool WriteShaderLayerSamples(std::string const& resources);
// Their file names, in the order written.
std::vector<std::string> ShaderLayerSampleFiles();

} // namespace vel
