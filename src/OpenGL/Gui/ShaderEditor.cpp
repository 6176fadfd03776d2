#include "OpenGL/Gui/ShaderEditor.h"

#include "Core/Communicate.h"
#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/FileDialogs.h"
#include "OpenGL/Gui/UI.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderLayer.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture.h"
#include "OpenGL/TextureManager.h"
#include "mainwindow/ConfigFile.h"

#include <imgui.h>
#include <imgui_stdlib.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace vel {

namespace {

char const* const STENCILS[] = {"Stencil All", "Stencil Background", "Stencil Content", "Stencil Layer",
                                "Stencil Scene"};

// The text of line `n` (from 1) of `text`.
std::string LineOf(std::string const& text, int n)
{
    std::istringstream in(text);
    std::string line;
    for (int i = 1; std::getline(in, line); ++i)
        if (i == n)
            return line;
    return {};
}

} // namespace

bool ShaderEditor::drawSamples()
{
    struct Entry {
        char const* label;
        char const* file;
    };
    static Entry const scenes[] = {{"DEMO", "DefaultFinal.vsc"},
                                   {"JULIA SET", "FractalJuliaSet.vsc"},
                                   {"MANDELBROT SET", "FractalMandelbrotSet.vsc"},
                                   {"HG_SDF", "HG_SDF.vsc"}};
    static Entry const effects[] = {{"HALFTONE", "FilterHalftone.vsc"},
                                    {"TILT-SHIFT", "FilterTiltShift.vsc"},
                                    {"MANGA DOTS", "FilterMangaDots.vsc"},
                                    {"MANGA DIRECTION", "FilterMangaDirection.vsc"},
                                    {"LENS FLARES", "FilterLensFlares.vsc"}};
    bool chosen = false;
    auto list = [&](char const* title, Entry const* entries, size_t count, bool append) {
        if (!ImGui::CollapsingHeader(title))
            return;
        for (size_t i = 0; i < count; ++i)
            if (ImGui::Selectable(entries[i].label)) {
                std::string const path = std::string(":/scenes/ShaderLayers/") + entries[i].file;
                ui_callbacks.push_back([path, append] { emit Communicate::instance().OpenFile(path, append); });
                chosen = true;
            }
    };
    list("SHADER LAYERS", scenes, std::size(scenes), false);
    list("EFFECTS (Append)", effects, std::size(effects), true);
    return chosen;
}

Shared<ShaderLayer> ShaderEditor::chosen() const
{
    auto const& layers = Rendering::instance().ShaderLayers;
    if (group < 0 || group >= ShaderLayer::GROUPS || index < 0 || index >= int(layers[group].size()))
        return {};
    return layers[group][size_t(index)];
}

void ShaderEditor::choose(int g, int i)
{
    group = g;
    index = i;
    common = -1;
    markedLine = 0;
    Shared<ShaderLayer> layer = chosen();
    buffer = layer ? layer->text : std::string();
}

void ShaderEditor::newLayer(int g)
{
    Shared<ShaderLayer> layer = ShaderLayer::FromXML(ShaderManager::ReadFile(":/shaders/ShaderIO/DefaultFinal.xml"),
                                                     "DefaultFinal.xml");
    if (!layer)
        layer = Shared<ShaderLayer>(new ShaderLayer("void main() { oColor = vec4(0.0); }\n"));
    Rendering::instance().addShaderLayer(g, layer);
    choose(g, int(Rendering::instance().ShaderLayers[g].size()) - 1);
}

void ShaderEditor::draw()
{
    if (!visible)
        return;
    ImGui::SetNextWindowSize(ImVec2(760, 520), ImGuiCond_FirstUseEver);
    if (!ImGui::Begin("Shader Layers##ShaderEditor", &visible)) {
        ImGui::End();
        return;
    }
    ImGui::Checkbox("ShaderLayersActive", &ShaderLayer::ActiveAll);
    ImGui::BeginChild("groups", ImVec2(200, 0), true);
    drawGroups();
    ImGui::EndChild();
    ImGui::SameLine();
    ImGui::BeginChild("editor", ImVec2(0, 0), false);
    std::deque<std::string>& commons = ShaderIncludeManager::instance().common;
    if (common >= 0 && common < int(commons.size())) {
        ImGui::Text("Common include ?Common %d", common);
        if (ImGui::InputTextMultiline("##common", &buffer, ImVec2(-1, -1), ImGuiInputTextFlags_AllowTabInput)) {
            commons[size_t(common)] = buffer;
            // Every layer may include it.
            for (auto const& g : Rendering::instance().ShaderLayers)
                for (Shared<ShaderLayer> const& layer : g)
                    layer->dirty = true;
        }
    } else if (Shared<ShaderLayer> layer = chosen()) {
        drawToolBar(*layer);
        float const errorsHeight = layer->errors.empty() ? 0.0f : 110.0f;
        if (ImGui::InputTextMultiline("##code", &buffer, ImVec2(-1, -1 - errorsHeight),
                                      ImGuiInputTextFlags_AllowTabInput))
            layer->setText(buffer);
        drawErrors(*layer);
    } else {
        ImGui::TextDisabled("Choose a layer, or add one to a group.");
    }
    ImGui::EndChild();
    ImGui::End();
}

void ShaderEditor::drawGroups()
{
    Rendering& r = Rendering::instance();
    for (int g = 0; g < ShaderLayer::GROUPS; ++g) {
        ImGui::PushID(g);
        ImGui::Checkbox("##on", &r.ShaderLayerGroupActive[g]);
        ImGui::SameLine();
        bool open = ImGui::TreeNodeEx(ShaderLayer::Groups[g], ImGuiTreeNodeFlags_DefaultOpen);
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("%s", ShaderLayer::Types[g]);
        if (open) {
            for (int i = 0; i < int(r.ShaderLayers[g].size()); ++i) {
                std::string const label = ShaderLayer::name(g, i) + (r.ShaderLayers[g][size_t(i)]->errors.empty() ? "" : " *");
                if (ImGui::Selectable(label.c_str(), common < 0 && group == g && index == i))
                    choose(g, i);
            }
            if (ImGui::SmallButton("NewShaderLayer"))
                newLayer(g);
            ImGui::SameLine();
            if (ImGui::SmallButton("OpenShaderLayer"))
                ui_callbacks.push_back([this, g] {
                    QString path = AskOpenFileName(nullptr, "Open Shader Layer", OPEN_SHADER_FINAL_PATH, "Shader layer (*.xml)");
                    if (path.isEmpty())
                        return;
                    if (Shared<ShaderLayer> layer = ShaderLayer::Open(path.toStdString())) {
                        ShaderLayer::Loaded = layer;
                        Rendering::instance().addShaderLayer(g, layer);
                        choose(g, int(Rendering::instance().ShaderLayers[g].size()) - 1);
                    }
                });
            ImGui::TreePop();
        }
        ImGui::PopID();
    }
    ImGui::Separator();
    drawSamples();
    ImGui::Separator();
    if (ImGui::TreeNodeEx("Common##ShaderLayers", ImGuiTreeNodeFlags_DefaultOpen)) {
        std::deque<std::string>& commons = ShaderIncludeManager::instance().common;
        for (int i = 0; i < int(commons.size()); ++i) {
            std::string const label = "?Common " + std::to_string(i);
            if (ImGui::Selectable(label.c_str(), common == i)) {
                common = i;
                buffer = commons[size_t(i)];
            }
        }
        if (ImGui::SmallButton("NewInclude")) {
            commons.emplace_back("// functions every layer may include\n");
            common = int(commons.size()) - 1;
            buffer = commons.back();
        }
        ImGui::TreePop();
    }
}

void ShaderEditor::drawToolBar(ShaderLayer& layer)
{
    ImGui::Checkbox("ico_onoff", &layer.active);
    ImGui::SameLine();
    ImGui::Checkbox("AutoCompile", &layer.autoCompile);
    ImGui::SameLine();
    if (ImGui::Button("Compile"))
        layer.compile(Rendering::instance().style);
    ImGui::SameLine();
    if (ImGui::Button("ico_new")) {
        buffer.clear();
        layer.setText(buffer);
    }
    ImGui::SameLine();
    if (ImGui::Button("AddMain")) {
        buffer += "\nvoid main()\n{\n    oColor = texelFetch(iImage, ivec2(gl_FragCoord.xy), 0);\n}\n";
        layer.setText(buffer);
    }
    ImGui::SameLine();
    if (ImGui::Button("AdaptFromShadertoy")) {
        buffer = ShaderLayer::AdaptFromShadertoy(buffer);
        layer.setText(buffer);
    }
    ImGui::SameLine();
    if (ImGui::Button("ico_default")) {
        Shared<ShaderLayer> fresh = ShaderLayer::FromXML(ShaderManager::ReadFile(":/shaders/ShaderIO/DefaultFinal.xml"),
                                                         "DefaultFinal.xml");
        if (fresh) {
            buffer = fresh->text;
            layer.setText(buffer);
        }
    }
    ImGui::SameLine();
    if (ImGui::Button("ico_save")) {
        std::string const xml = layer.ToXML();
        ui_callbacks.push_back([xml] {
            QString path = AskSaveFileName(nullptr, "Save Shader Layer", OPEN_SHADER_FINAL_PATH, "Shader layer (*.xml)", "xml");
            if (!path.isEmpty())
                if (Shared<ShaderLayer> copy = ShaderLayer::FromXML(xml, path.toStdString()))
                    copy->Save(path.toStdString());
        });
    }
    ImGui::SameLine();
    if (ImGui::Button("Remove"))
        ui_callbacks.push_back([g = group, i = index, this] {
            auto& layers = Rendering::instance().ShaderLayers[g];
            if (i >= 0 && i < int(layers.size()))
                layers.erase(layers.begin() + i);
            choose(g, -1);
        });
    drawInputs(layer);
    if (group <= ShaderLayer::RunPostOpaque) {
        if (ImGui::Checkbox("DepthWrite", &layer.depthWrite))
            layer.dirty = true;
        ImGui::SameLine();
    }
    ImGui::SetNextItemWidth(160);
    ImGui::Combo("##stencil", &layer.stencil, STENCILS, IM_ARRAYSIZE(STENCILS));
    ImGui::SameLine();
    bool own = layer.custom;
    if (ImGui::Checkbox("Own buffer", &own))
        layer.setCustom(group, own);
    if (layer.custom) {
        ImGui::SameLine();
        ImGui::Checkbox("Percent", &layer.percent);
        ImGui::SetNextItemWidth(90);
        ImGui::InputFloat(layer.percent ? "View width (%)" : "View width (pixels)", &layer.width);
        ImGui::SameLine();
        ImGui::SetNextItemWidth(90);
        ImGui::InputFloat(layer.percent ? "View height (%)" : "View height (pixels)", &layer.height);
        ImGui::SameLine();
        ImGui::Checkbox("Generate MipMaps", &layer.generateMipMaps);
        layer.width = std::clamp(layer.width, 1.0f, float(ShaderLayer::MAX_BUFFER_SIZE));
        layer.height = std::clamp(layer.height, 1.0f, float(ShaderLayer::MAX_BUFFER_SIZE));
    }
}

void ShaderEditor::drawInputs(ShaderLayer& layer)
{
    if (ImGui::Button("Textures *##SL"))
        ImGui::OpenPopup("Textures##SL");
    ImGui::SameLine();
    if (ImGui::Button("Include *##SL"))
        ImGui::OpenPopup("Includes##SL");
    ImGui::SameLine();
    bool mipmaps = layer.mipmapsFromInput[0];
    if (ImGui::Checkbox("Use MipMaps From Input", &mipmaps))
        layer.mipmapsFromInput.fill(mipmaps);
    ImGui::SameLine();
    if (ImGui::BeginPopup("Textures##SL")) {
        Rendering& r = Rendering::instance();
        for (int i = 0; i < ShaderCode::SAMPLERS; ++i) {
            ImGui::PushID(i);
            Texture* t = layer.samplers[size_t(i)].get();
            char g = 0;
            int at = -1;
            std::string what = !t ? "(none)"
                               : r.FindCustomShaderLayer(t, g, at) ? ShaderLayer::name(g, at)
                                                                   : t->name;
            ImGui::Text("iTex%d  %s", i, what.c_str());
            ImGui::SameLine();
            if (ImGui::SmallButton("ico_open"))
                ui_callbacks.push_back([i, target = chosen()] {
                    QString path = AskOpenFileName(nullptr, "Texture", OPEN_SHADER_FINAL_PATH,
                                                   "Images (*.png *.jpg *.hdr *.bmp)");
                    if (!path.isEmpty() && target)
                        target->set_sampler(i, TextureManager::instance().AddFile(path.toStdString()));
                });
            // The output of a layer with a buffer of its own, itself included (a feedback loop).
            for (auto const& list : r.ShaderLayers)
                for (Shared<ShaderLayer> const& source : list)
                    if (source->custom && source->fbo) {
                        ImGui::SameLine();
                        char sg = 0;
                        int si = -1;
                        r.FindShaderLayer(source.get(), sg, si);
                        if (ImGui::SmallButton(ShaderLayer::name(sg, si).c_str()))
                            layer.set_sampler(i, Shared<Texture>(source->fbo->attachments[1]));
                    }
            ImGui::SameLine();
            if (ImGui::SmallButton("x"))
                layer.set_sampler(i, {});
            ImGui::PopID();
        }
        ImGui::EndPopup();
    }
    if (ImGui::BeginPopup("Includes##SL")) {
        ImGui::TextUnformatted("Editable Includes");
        std::deque<std::string> const& commons = ShaderIncludeManager::instance().common;
        for (int i = 0; i < int(commons.size()); ++i) {
            std::string const name = "?Common " + std::to_string(i);
            bool on = std::find(layer.includes.begin(), layer.includes.end(), name) != layer.includes.end();
            if (ImGui::Checkbox(name.c_str(), &on)) {
                if (on)
                    layer.includes.push_back(name);
                else
                    layer.includes.erase(std::remove(layer.includes.begin(), layer.includes.end(), name),
                                         layer.includes.end());
                layer.dirty = true;
            }
        }
        ImGui::EndPopup();
    }
}

void ShaderEditor::drawErrors(ShaderLayer& layer)
{
    if (layer.errors.empty())
        return;
    ImGui::BeginChild("errors", ImVec2(0, 0), true);
    for (size_t i = 0; i < layer.errors.size(); ++i) {
        CodeError const& e = layer.errors[i];
        ImGui::PushID(int(i));
        ImGui::PushStyleColor(ImGuiCol_Text, ImVec4(1.0f, 0.45f, 0.4f, 1.0f));
        if (ImGui::Selectable(e.message.c_str(), markedLine == e.line && e.line > 0))
            markedLine = e.line;
        ImGui::PopStyleColor();
        if (markedLine == e.line && e.line > 0)
            ImGui::TextDisabled("%5d | %s", e.line, LineOf(buffer, e.line).c_str());
        ImGui::PopID();
    }
    ImGui::EndChild();
}

} // namespace vel
