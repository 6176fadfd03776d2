// ShaderEditor: the window in which the user writes shader layers and common includes.
//
// The four groups with their layers on the left, the chosen layer's tool bar and text on the
// right, and under the text every message of the last compile, each at the user's line
// (click one to see that line marked). Drawn by UI::draw while `visible`; file dialogs go
// through ui_callbacks, outside the ImGui frame.
#pragma once

#include "Memory/Shared.h"
#include "Memory/Singleton.h"

#include <string>

namespace vel {

class ShaderLayer;

class ShaderEditor : public Singleton<ShaderEditor> {
    friend class Singleton<ShaderEditor>;

public:
    bool visible = false;
    int group = 3;       // the chosen layer: group and place, -1 none
    int index = -1;
    int common = -1;     // the chosen common include, -1 when a layer is chosen
    int markedLine = 0;  // the line of the error clicked last, 0 none
    std::string buffer;  // the text being edited

    void draw();
    // The shader layer samples of the start window, folded: "SHADER LAYERS" open a scene,
    // "EFFECTS (Append)" add a filter to the scene there is. True when one was chosen (the load
    // is queued). Shown in the editor until the start window has room for them.
    static bool drawSamples();
    // A new layer from the shipped default text, chosen, at the end of `group`.
    void newLayer(int group);
    // The chosen layer, or null.
    Shared<ShaderLayer> chosen() const;

private:
    ShaderEditor() = default;
    void drawGroups();
    void drawToolBar(ShaderLayer& layer);
    void drawInputs(ShaderLayer& layer);
    void drawErrors(ShaderLayer& layer);
    void choose(int group, int index);
};

} // namespace vel
