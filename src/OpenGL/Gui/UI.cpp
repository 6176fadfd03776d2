#include "OpenGL/Gui/UI.h"

#include "Core/ReadTextFile.h"
#include "OpenGL/Gui/ShaderEditor.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Texture2D.h"

#include <glad/gl.h>

#include <imgui.h>
#include <backends/imgui_impl_opengl3.h>

#include <algorithm>
#include <cstdint>

namespace vel {

int uiBase_start = 0;
bool uiBase_close_popups = false;
std::vector<std::function<void()>> ui_callbacks;

namespace {

char const* const START_WINDOW = "VELLUMBRA##pStartWindow";

struct TextEntry {
    char const* entry;
    char const* path;
};
TextEntry const TEXTS[] = {
    {"Controls", ":/Docs/Shortcuts.txt"},
    {"License", ":/License/License.txt"},
    {"ReleaseHistory", ":/License/History.txt"},
};

ImVec4 const INFO_COLOR(0.8f, 0.8f, 0.8f, 1.0f);
ImVec4 const WARNING_COLOR(1.0f, 0.8f, 0.2f, 1.0f);
ImVec4 const ERROR_COLOR(1.0f, 0.35f, 0.3f, 1.0f);

ImVec4 LineColor(QStringRef line)
{
    if (line.startsWith(QLatin1String("[w] ")))
        return WARNING_COLOR;
    if (line.startsWith(QLatin1String("[e] ")))
        return ERROR_COLOR;
    return INFO_COLOR;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Life of the interface

void UI::start()
{
    if (started)
        return;
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr; // the layout is the program's, not a file in the working folder
    io.ConfigFlags |= ImGuiConfigFlags_NavEnableKeyboard;
    ImGui::StyleColorsDark();
    ImGui::GetStyle().WindowRounding = 3.0f;
    ImGui_ImplOpenGL3_Init("#version 330 core");
    started = true;
}

void UI::shutdown()
{
    if (!started)
        return;
    ImGui_ImplOpenGL3_Shutdown();
    ImGui::DestroyContext();
    started = false;
}

void UI::new_frame(int width, int height, float dt)
{
    ImGuiIO& io = ImGui::GetIO();
    io.DisplaySize = ImVec2(float(width), float(height));
    io.DisplayFramebufferScale = ImVec2(1, 1);
    io.DeltaTime = dt > 0 ? dt : 1e-4f;
    ImGui_ImplOpenGL3_NewFrame();
    ImGui::NewFrame();
}

void UI::end_frame()
{
    ImGui::Render();
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    ImDrawData* data = ImGui::GetDrawData();
    ImGui_ImplOpenGL3_RenderDrawData(data);
    // The union of the clip rectangles of every draw command.
    float box[4] = {1e30f, 1e30f, -1e30f, -1e30f};
    for (int i = 0; i < data->CmdListsCount; ++i) {
        for (ImDrawCmd const& cmd : data->CmdLists[i]->CmdBuffer) {
            box[0] = std::min(box[0], cmd.ClipRect.x);
            box[1] = std::min(box[1], cmd.ClipRect.y);
            box[2] = std::max(box[2], cmd.ClipRect.z);
            box[3] = std::max(box[3], cmd.ClipRect.w);
        }
    }
    drawn[0] = std::max(box[0], 0.0f);
    drawn[1] = std::max(box[1], 0.0f);
    drawn[2] = std::min(box[2], data->DisplaySize.x);
    drawn[3] = std::min(box[3], data->DisplaySize.y);
    // ImGui sets blending, scissor, programs and bindings itself.
    ResyncGLMirrors();
}

bool UI::popupOpen()
{
    return ImGui::GetCurrentContext() && ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopupId);
}

// ---------------------------------------------------------------------------------------------
// Windows

void UI::draw(Frame const& frame)
{
    if (frame.log)
        drawLog(*frame.log);
    if (showInfo)
        drawInfo(frame);
    if (showText)
        drawText();
    drawNavigation(frame.navigation);
    drawContent();
    drawStatus(frame.status);
    ShaderEditor::instance().draw();
    drawProgress();
    drawStart();
    // The popups there are have seen the request by now.
    uiBase_close_popups = false;
    resetLayout = false;
}

void UI::drawProgress()
{
    if (progressSteps <= 0 || progressStep < 0 || progressStep >= progressSteps)
        return;
    ImGuiIO& io = ImGui::GetIO();
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, io.DisplaySize.y * 0.5f), ImGuiCond_Always,
                            ImVec2(0.5f, 0.5f));
    ImGui::SetNextWindowSize(ImVec2(300, 0), ImGuiCond_Always);
    std::string title = progressTitle.toStdString() + "##progress";
    if (ImGui::Begin(title.c_str(), nullptr, ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
        ImGui::ProgressBar(float(progressStep) / float(progressSteps));
    ImGui::End();
}

void UI::drawLog(QString const& log)
{
    ImGuiIO& io = ImGui::GetIO();
    ImGuiCond cond = resetLayout ? ImGuiCond_Always : ImGuiCond_FirstUseEver;
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x - 430, io.DisplaySize.y - 190), cond);
    ImGui::SetNextWindowSize(ImVec2(420, 180), cond);
    if (ImGui::Begin("Log##pLogWindow", nullptr, ImGuiWindowFlags_NoCollapse)) {
        ImGui::TextColored(INFO_COLOR, "Log (newest first):   i info   ");
        ImGui::SameLine(0, 0);
        ImGui::TextColored(WARNING_COLOR, "[w] warning   ");
        ImGui::SameLine(0, 0);
        ImGui::TextColored(ERROR_COLOR, "[e] error");
        ImGui::Separator();
        ImGui::BeginChild("lines");
        for (QStringRef const& line : log.splitRef(QLatin1Char('\n'))) {
            QByteArray utf8 = line.toUtf8();
            ImGui::PushStyleColor(ImGuiCol_Text, LineColor(line));
            ImGui::TextUnformatted(utf8.constData(), utf8.constData() + utf8.size());
            ImGui::PopStyleColor();
        }
        ImGui::EndChild();
    }
    ImGui::End();
}

void UI::drawInfo(Frame const& frame)
{
    ImGuiCond cond = resetLayout ? ImGuiCond_Always : ImGuiCond_Appearing;
    ImGui::SetNextWindowPos(ImVec2(90, 40), cond);
    if (ImGui::Begin("Info##info", &showInfo, ImGuiWindowFlags_AlwaysAutoResize)) {
        ImGui::Text("VELLUMBRA %s", "0.9.9.7");
        ImGui::Text("%s", frame.gl.c_str());
        ImGui::Text("Dear ImGui %s", ImGui::GetVersion());
        ImGui::Text("%.1f frames per second", double(frame.fps));
        // Until the shaders tab exists, the shader editor opens from here.
        ImGui::Checkbox("Shader Layers##editor", &ShaderEditor::instance().visible);
    }
    ImGui::End();
}

void UI::openText(std::string const& entry)
{
    for (TextEntry const& t : TEXTS) {
        if (entry != t.entry)
            continue;
        textTitle = entry;
        text = ReadTextFile(QString::fromLatin1(t.path)).toStdString();
        showText = true;
    }
}

void UI::toggleText(std::string const& entry)
{
    if (showText && textTitle == entry)
        showText = false;
    else
        openText(entry);
}

void UI::drawText()
{
    ImGuiIO& io = ImGui::GetIO();
    ImGuiCond cond = resetLayout ? ImGuiCond_Always : ImGuiCond_Appearing;
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, io.DisplaySize.y * 0.5f), cond, ImVec2(0.5f, 0.5f));
    ImGui::SetNextWindowSize(ImVec2(620, io.DisplaySize.y * 0.8f), cond);
    std::string title = textTitle + "##pTextWindow";
    if (ImGui::Begin(title.c_str(), &showText))
        ImGui::TextUnformatted(text.data(), text.data() + text.size());
    ImGui::End();
}

void UI::drawStart()
{
    if (uiBase_start == 0) {
        ImGui::OpenPopup(START_WINDOW);
        uiBase_start = 1;
    }
    ImGuiIO& io = ImGui::GetIO();
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x * 0.5f, io.DisplaySize.y * 0.5f), ImGuiCond_Appearing,
                            ImVec2(0.5f, 0.5f));
    ImGui::SetNextWindowSize(ImVec2(360, 0), ImGuiCond_Appearing);
    bool open = true;
    if (!ImGui::BeginPopupModal(START_WINDOW, &open, ImGuiWindowFlags_AlwaysAutoResize)) {
        // Closed by its button or from outside: the start phase is over without a scene.
        if (uiBase_start == 2 && startRequest < 0)
            startRequest = 1;
        return;
    }
    uiBase_start = 2;
    // The sample scenes take their places here as they exist (the shader layer samples are in
    // the shader editor for now: ShaderEditor::drawSamples).
    ImGui::TextUnformatted("Recent Files");
    ImGui::Separator();
    if (recent.empty())
        ImGui::TextDisabled("none yet");
    for (std::string const& path : recent) {
        if (ImGui::Selectable(path.c_str())) {
            std::string chosen = path;
            ui_callbacks.push_back([this, chosen] {
                if (openRecent)
                    openRecent(chosen);
            });
            startRequest = 1;
            ImGui::CloseCurrentPopup();
        }
    }
    if (uiBase_close_popups) {
        startRequest = 1;
        ImGui::CloseCurrentPopup();
    }
    ImGui::EndPopup();
    if (!open)
        startRequest = 1;
}

void UI::drawStatus(std::vector<std::string> const& lines)
{
    if (lines.empty())
        return;
    ImGuiIO& io = ImGui::GetIO();
    ImGui::SetNextWindowPos(ImVec2(10, io.DisplaySize.y - 10), ImGuiCond_Always, ImVec2(0, 1));
    ImGui::SetNextWindowBgAlpha(0.5f);
    ImGuiWindowFlags const flags = ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize |
                                   ImGuiWindowFlags_NoInputs | ImGuiWindowFlags_NoFocusOnAppearing |
                                   ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoNav;
    if (ImGui::Begin("Status##status", nullptr, flags))
        for (std::string const& line : lines)
            ImGui::TextUnformatted(line.c_str());
    ImGui::End();
}

void UI::drawNavigation(Texture2D const* navigation)
{
    if (!navigation)
        return;
    ImGuiCond cond = resetLayout ? ImGuiCond_Always : ImGuiCond_FirstUseEver;
    ImGuiIO& io = ImGui::GetIO();
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x - 140, 10), cond);
    if (ImGui::Begin("Navigation", nullptr,
                     ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoBackground)) {
        // GL rows run bottom-up: flip the image.
        ImTextureID id = reinterpret_cast<ImTextureID>(std::uintptr_t(navigation->textureId));
        ImGui::Image(id, ImVec2(float(navigation->width()), float(navigation->height())), ImVec2(0, 1), ImVec2(1, 0));
    }
    ImGui::End();
}

void UI::drawContent()
{
    ImGuiCond cond = resetLayout ? ImGuiCond_Always : ImGuiCond_FirstUseEver;
    ImGuiIO& io = ImGui::GetIO();
    ImGui::SetNextWindowPos(ImVec2(io.DisplaySize.x - 330, 150), cond);
    ImGui::SetNextWindowSize(ImVec2(320, 450), cond); // clear of the log below
    if (ImGui::Begin("Content##tTabsContent", nullptr, ImGuiWindowFlags_NoCollapse) &&
        ImGui::BeginTabBar("tabs")) {
        if (ImGui::BeginTabItem("Render##tTabRender")) {
            renderTab.draw(Rendering::instance());
            ImGui::EndTabItem();
        }
        ImGui::EndTabBar();
    }
    ImGui::End();
}

} // namespace vel
