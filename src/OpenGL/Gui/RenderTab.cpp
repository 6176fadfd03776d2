#include "OpenGL/Gui/RenderTab.h"

#include "OpenGL/Rendering.h"

#include <imgui.h>

#include <string>

namespace vel {

namespace {
void Heading(char const* title)
{
    ImGui::Separator();
    ImGui::TextDisabled("%s", title);
}
} // namespace

void RenderTab::remember(char const* label)
{
    ImVec2 const a = ImGui::GetItemRectMin(), b = ImGui::GetItemRectMax();
    centres[label] = {0.5f * (a.x + b.x), 0.5f * (a.y + b.y)};
}

void RenderTab::toggle(char const* label, bool& on, float* strength, float max)
{
    ImGui::Checkbox(label, &on);
    remember(label);
    if (!strength)
        return;
    ImGui::SameLine();
    std::string const id = std::string("##strength") + label;
    ImGui::SliderFloat(id.c_str(), strength, 0.0f, max, "%.2f");
}

void RenderTab::draw(Rendering& r)
{
    ImGui::PushItemWidth(140);
    ImGui::Checkbox("Depth Test", &r.DepthTest);
    Heading("Effects");
    toggle("Edge Detect", r.EdgeDetect, nullptr, 0);
    ImGui::SliderFloat("Contours ", &r.contours, 0.0f, 4.0f, "%.1f px");
    toggle("SSAO     ", r.ScreenSpaceAmbientOcclusion, &r.ssaoStrength, 2.0f);
    toggle("SSSS     ", r.ssss, &r.ssssStrength, 2.0f);
    toggle("SSR      ", r.ScreenSpaceReflection, &r.ssrStrength, 1.0f);
    ImGui::SliderInt("SSR Rays ", &r.ssrRays, 1, 64);
    toggle("Fog      ", r.fog, &r.fogStrength, 1.0f);
    ImGui::SliderFloat("Shadow   ", &r.shadow, 0.0f, 1.0f, "%.2f");
    ImGui::SliderFloat("Noise    ", &r.noise, 0.0f, 0.5f, "%.3f");
    ImGui::SliderFloat("Jitter   ", &r.jitter, 0.0f, 2.0f, "%.2f px");
    ImGui::SliderFloat("DOF Size ", &r.dofSize, 0.0f, 8.0f, "%.2f");
    Heading("Post");
    ImGui::SliderFloat("Glow     ", &r.glow, 0.0f, 4.0f, "%.2f");
    ImGui::SliderFloat("Bloom    ", &r.bloom, 0.0f, 2.0f, "%.2f");
    ImGui::SliderFloat("Exposure ", &r.exposure, 0.0f, 8.0f, "%.2f");
    char const* const curves[] = {"Off", "Gamma", "Reinhard", "Uncharted 2", "ACES"};
    ImGui::Combo("Tonemap  ", &r.tonemap, curves, IM_ARRAYSIZE(curves));
    ImGui::SliderFloat("Gamma    ", &r.gamma, 1.0f, 3.0f, "%.2f");
    toggle("Lens Chr.", r.LensChromaticAberration, &r.lensChroma, 0.05f);
    ImGui::SliderFloat("A Chroma ", &r.chroma, 0.0f, 1.0f, "%.2f");
    Heading("Light and camera");
    ImGui::DragFloat3("Light    ", &r.LightSource.x, 10.0f);
    ImGui::SliderFloat("Rotate   ", &r.RotateLight, -3.0f, 3.0f, "%.2f rad/s");
    ImGui::SliderFloat("FOV      ", &r.FieldOfView, 5.0f, 120.0f, "%.0f deg");
    char const* const cameras[] = {"Perspective", "Orthographic"};
    ImGui::Combo("Type     ", &r.cameraType, cameras, IM_ARRAYSIZE(cameras));
    toggle("Limit FPS", r.LimitFramesPerSecond, nullptr, 0);
    toggle("Turntable  ", r.Turntable, nullptr, 0);
    toggle("Halfsize   ", r.HalfsizeViewport, nullptr, 0);
    ImGui::PopItemWidth();
}

} // namespace vel
