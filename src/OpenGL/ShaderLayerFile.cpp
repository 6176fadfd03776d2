// ShaderLayer: the layer XML file. Root "Vellumbra_Shader_Layer" (an older root name is read
// too); children Version, Depth, Stencil, Mipmaps, Fragment_Shader and iTex0 to iTex7.
#include "OpenGL/ShaderLayer.h"

#include "Core/Communicate.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture.h"
#include "OpenGL/TextureManager.h"

#include <QFile>
#include <QString>

#include <tinyxml2.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vel {

namespace {

char const* const ROOT = "Vellumbra_Shader_Layer";
char const* const OLD_ROOT = "Tessaron_Shader_Layer";
constexpr int FILE_VERSION = 20200511;

bool Refuse(std::string const& where, std::string const& why)
{
    LogInfo(QString::fromStdString("Shader layer '" + where + "' not loaded: " + why + "."), 2);
    return false;
}

// An integer attribute within [low, high]; a missing element keeps `value`.
bool ReadInt(tinyxml2::XMLElement const* root, char const* element, char const* attribute, int low, int high,
             int& value, std::string const& where)
{
    tinyxml2::XMLElement const* e = root->FirstChildElement(element);
    if (!e)
        return true;
    char const* text = e->Attribute(attribute);
    bool ok = false;
    int read = text ? QString(text).toInt(&ok) : 0;
    if (!ok || read < low || read > high)
        return Refuse(where, std::string(element) + " " + attribute + " must be a number from " + std::to_string(low) +
                                 " to " + std::to_string(high));
    value = read;
    return true;
}

// The names of `#include "..."` lines of a text, comments ignored.
std::vector<std::string> IncludedNames(std::string const& text)
{
    CodeListing listing;
    listing.user(text);
    std::vector<std::string> names;
    for (std::string const& line : listing.lines) {
        size_t at = line.find("#include");
        if (at == std::string::npos)
            continue;
        size_t open = line.find('"', at);
        size_t close = open == std::string::npos ? open : line.find('"', open + 1);
        names.push_back(close == std::string::npos ? std::string() : line.substr(open + 1, close - open - 1));
    }
    return names;
}

} // namespace

Shared<ShaderLayer> ShaderLayer::FromXML(std::string const& text, std::string const& where)
{
    if (text.size() > size_t(ShaderManager::FileSizeLimit)) {
        Refuse(where, "the file is larger than " + std::to_string(ShaderManager::FileSizeLimit >> 20) + " MiB");
        return {};
    }
    tinyxml2::XMLDocument doc;
    if (doc.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS) {
        Refuse(where, std::string("the file is not whole XML (") + doc.ErrorStr() + ")");
        return {};
    }
    tinyxml2::XMLElement const* root = doc.RootElement();
    if (!root || (std::strcmp(root->Name(), ROOT) != 0 && std::strcmp(root->Name(), OLD_ROOT) != 0)) {
        Refuse(where, std::string("the root element is not ") + ROOT);
        return {};
    }
    static char const* const known[] = {"Version", "Depth", "Stencil", "Mipmaps", "Fragment_Shader"};
    for (tinyxml2::XMLElement const* e = root->FirstChildElement(); e; e = e->NextSiblingElement()) {
        std::string const name = e->Name();
        bool ok = std::find(std::begin(known), std::end(known), name) != std::end(known);
        for (int i = 0; i < SAMPLERS && !ok; ++i)
            ok = name == "iTex" + std::to_string(i);
        if (!ok) {
            Refuse(where, "the element <" + name + "> is not part of a layer file");
            return {};
        }
    }
    Shared<ShaderLayer> layer(new ShaderLayer());
    int version = 0, depth = 0, stencil = layer->stencil, mipmaps = 0;
    if (!ReadInt(root, "Version", "value", 0, 99999999, version, where) ||
        !ReadInt(root, "Depth", "write", 0, 1, depth, where) ||
        !ReadInt(root, "Stencil", "test", StencilAll, StencilScene, stencil, where) ||
        !ReadInt(root, "Mipmaps", "use", 0, 1, mipmaps, where))
        return {};
    layer->depthWrite = depth != 0;
    layer->stencil = stencil;
    layer->mipmapsFromInput.fill(mipmaps != 0);
    if (tinyxml2::XMLElement const* code = root->FirstChildElement("Fragment_Shader"))
        layer->text = code->Attribute("text") ? code->Attribute("text") : "";
    // An include that can't be found would only fail at the compile: refuse the file now.
    for (std::string const& name : IncludedNames(layer->text))
        if (ShaderIncludeManager::instance().AddFile(name).empty()) {
            Refuse(where, "its include \"" + name + "\" cannot be found");
            return {};
        }
    for (int i = 0; i < SAMPLERS; ++i) {
        tinyxml2::XMLElement const* e = root->FirstChildElement(("iTex" + std::to_string(i)).c_str());
        char const* path = e ? e->Attribute("path") : nullptr;
        if (!path || !*path)
            continue;
        Shared<Texture> texture = TextureManager::instance().AddFile(path);
        if (!texture)
            LogInfo(QString("Shader layer '%1': the texture '%2' of iTex%3 cannot be read; the slot stays empty.")
                        .arg(QString::fromStdString(where), path)
                        .arg(i),
                    1);
        layer->samplers[size_t(i)] = texture;
    }
    return layer;
}

Shared<ShaderLayer> ShaderLayer::Open(std::string const& path)
{
    std::string text;
    if (!ShaderManager::ReadFile(path, text)) {
        Refuse(path, "the file cannot be read");
        return {};
    }
    return FromXML(text, path);
}

std::string ShaderLayer::ToXML() const
{
    tinyxml2::XMLDocument doc;
    doc.InsertEndChild(doc.NewDeclaration());
    tinyxml2::XMLElement* root = doc.NewElement(ROOT);
    doc.InsertEndChild(root);
    root->InsertNewChildElement("Version")->SetAttribute("value", FILE_VERSION);
    root->InsertNewChildElement("Depth")->SetAttribute("write", depthWrite ? 1 : 0);
    root->InsertNewChildElement("Stencil")->SetAttribute("test", stencil);
    root->InsertNewChildElement("Mipmaps")->SetAttribute("use", mipmapsFromInput[0] ? 1 : 0);
    root->InsertNewChildElement("Fragment_Shader")->SetAttribute("text", text.c_str());
    for (int i = 0; i < SAMPLERS; ++i)
        if (samplers[size_t(i)] && !samplers[size_t(i)]->name.empty())
            root->InsertNewChildElement(("iTex" + std::to_string(i)).c_str())
                ->SetAttribute("path", samplers[size_t(i)]->name.c_str());
    tinyxml2::XMLPrinter printer;
    doc.Print(&printer);
    return printer.CStr();
}

bool ShaderLayer::Save(std::string const& path) const
{
    QFile file(QString::fromStdString(path));
    std::string const xml = ToXML();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(xml.data(), qint64(xml.size())) != qint64(xml.size())) {
        LogInfo(QString::fromStdString("The shader layer cannot be written to '" + path + "'."), 2);
        return false;
    }
    return true;
}

} // namespace vel
