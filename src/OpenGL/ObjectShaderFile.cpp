#include "OpenGL/ObjectShaderFile.h"

#include "OpenGL/ObjectShader.h"

#include "Core/Communicate.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture.h"

#include <QString>

#include <tinyxml2.h>

#include <algorithm>
#include <cstring>

namespace vel {

namespace {

char const* const ROOT = "Vellumbra_Object_Shader";

bool Refuse(std::string const& where, std::string const& why)
{
    LogInfo(QString::fromStdString("Object shader '" + where + "' not loaded: " + why + "."), 2);
    return false;
}

} // namespace

bool ObjectShaderFromXML(ObjectShader& shader, std::string const& text, std::string const& where)
{
    if (text.size() > size_t(ShaderManager::FileSizeLimit))
        return Refuse(where, "the file is larger than " + std::to_string(ShaderManager::FileSizeLimit >> 20) + " MiB");
    tinyxml2::XMLDocument doc;
    if (doc.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS)
        return Refuse(where, std::string("the file is not whole XML (") + doc.ErrorStr() + ")");
    tinyxml2::XMLElement const* root = doc.RootElement();
    if (!root || std::strcmp(root->Name(), ROOT) != 0)
        return Refuse(where, std::string("the root element is not ") + ROOT);
    std::map<std::string, std::string> read;
    std::vector<std::pair<int, std::string>> paths;
    for (tinyxml2::XMLElement const* e = root->FirstChildElement(); e; e = e->NextSiblingElement()) {
        std::string const name = e->Name();
        char const* value = e->Attribute(name.rfind("iTex", 0) == 0 ? "path" : "text");
        if (std::find(ObjectShader::Titles.begin(), ObjectShader::Titles.end(), name) != ObjectShader::Titles.end()) {
            read[name] = value ? value : "";
            continue;
        }
        int slot = name.size() == 5 && name.rfind("iTex", 0) == 0 ? name[4] - '0' : -1;
        if (slot >= 0 && slot < ShaderCode::SAMPLERS) {
            if (value && *value)
                paths.emplace_back(slot, value);
        } else if (name != "Version") {
            return Refuse(where, "the element <" + name + "> is not part of an object shader file");
        }
    }
    shader.code = std::move(read);
    shader.samplerPaths = std::move(paths);
    shader.dirty = true;
    return true;
}

std::string ObjectShaderToXML(ObjectShader const& shader)
{
    tinyxml2::XMLDocument doc;
    doc.InsertEndChild(doc.NewDeclaration());
    tinyxml2::XMLElement* root = doc.NewElement(ROOT);
    doc.InsertEndChild(root);
    root->InsertNewChildElement("Version")->SetAttribute("value", 20200511);
    for (std::string const& title : ObjectShader::Titles) {
        auto found = shader.code.find(title);
        root->InsertNewChildElement(title.c_str())
            ->SetAttribute("text", found == shader.code.end() ? "" : found->second.c_str());
    }
    for (int i = 0; i < ShaderCode::SAMPLERS; ++i)
        if (Texture const* t = shader.samplers[size_t(i)].get(); t && !t->name.empty())
            root->InsertNewChildElement(("iTex" + std::to_string(i)).c_str())->SetAttribute("path", t->name.c_str());
    tinyxml2::XMLPrinter printer;
    doc.Print(&printer);
    return printer.CStr();
}

} // namespace vel
