// RenderTab: the tab `tTabRender` of the content window: the render settings of the frame's
// screen effects, light and camera, under the labels they carry everywhere ("SSAO     " and so
// on), each changing Rendering at once.
#pragma once

#include <array>
#include <map>
#include <string>

namespace vel {

class Rendering;

class RenderTab {
public:
    // The widgets, into the current ImGui window.
    void draw(Rendering& r);
    // Where the last draw put each switch's centre, by label, in interface pixels: the
    // application tests click there.
    std::map<std::string, std::array<float, 2>> centres;

private:
    // A switch and, on its line, the strength it enables.
    void toggle(char const* label, bool& on, float* strength, float max);
    void remember(char const* label);
};

} // namespace vel
