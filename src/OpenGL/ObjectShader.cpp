#include "OpenGL/ObjectShader.h"

namespace vel {

std::vector<std::string> const ObjectShader::Titles = {
    "VertexIOFunctionsCode", "VertexMainLocalCode", "VertexMainWorldCode",
    "FragmentIOFunctionsCode", "FragmentMainCode",
};
bool ObjectShader::ActiveAll = true;
std::map<std::string, std::string> ObjectShader::Loaded;
std::vector<int> ObjectShader::LoadedfIncludes;
std::vector<int> ObjectShader::LoadedvIncludes;

ObjectShader::~ObjectShader() = default;

} // namespace vel
