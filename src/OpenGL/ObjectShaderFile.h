// The object shader XML file (MainWindow::ObjectShaderLoad, ObjectShaderSave). Root
// "Vellumbra_Object_Shader"; children Version, one element for each of the five fragments of
// ObjectShader::Titles with its code in "text", and iTex0 to iTex7 with a texture "path".
#pragma once

#include <string>

namespace vel {

class ObjectShader;

// Takes the fragments and texture references of an XML text into `shader`; false, with a log
// message naming `where` and the fault, for a text that doesn't parse, has another root or an
// element not of the format, or is too large: the shader is then unchanged.
bool ObjectShaderFromXML(ObjectShader& shader, std::string const& text, std::string const& where);
std::string ObjectShaderToXML(ObjectShader const& shader);

} // namespace vel
