// UI: the singleton that owns the interface. Dear ImGui draws all of it once a frame into
// the widget's interface framebuffer, which the frame loop blends over the image.
//
// Life inside a frame: start (once, with the GL context current), then per frame new_frame,
// draw, end_frame; shutdown before the context goes. Work that must not run inside an ImGui
// frame is pushed to `ui_callbacks`, which the frame loop drains after the interface is drawn.
//
// Windows so far: the log (pLogWindow), the info window, the text window (pTextWindow: the key
// sheet "Controls"), the start window (pStartWindow), the "Navigation" sphere and the content
// window (tTabsContent) with its Render tab.
#pragma once

#include "Memory/Singleton.h"
#include "OpenGL/Gui/RenderTab.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace vel {

class Texture2D;

// The start phase: below 3 the start window is pending or open, and the viewport takes no keys.
extern int uiBase_start;
// Set to close every popup at the next frame.
extern bool uiBase_close_popups;
// Deferred work, drained by the frame loop after the interface: a callback pushed while the
// list drains runs in the next frame.
extern std::vector<std::function<void()>> ui_callbacks;

class UI : public Singleton<UI> {
    friend class Singleton<UI>;

public:
    // What the frame hands the interface to show.
    struct Frame {
        float fps = 0;
        Texture2D const* navigation = nullptr;
        QString const* log = nullptr;
        std::string gl; // version and renderer, for the info window
        std::vector<std::string> status; // the viewport's lines for the status panel
    };

    // What the last end_frame drew, in framebuffer pixels from the top left: x0, y0, x1, y1.
    // Empty (x1 <= x0) when nothing was drawn. Lets the frame blend only that part.
    float drawn[4] = {0, 0, 0, 0};

    bool started = false;
    bool showInfo = false;
    bool showText = false;
    std::string textTitle;    // entry of the text window: "Controls", "License", "ReleaseHistory"
    std::string text;         // what the text window shows
    int startRequest = -1;    // set when the start window is left: 1 means no scene asked for
    bool resetLayout = true;  // place every window at its default at the next frame
    std::vector<std::string> recent; // the "Recent Files" of the start window, newest first
    std::function<void(std::string const&)> openRecent; // what a recent entry does
    // A long load or save: shown while 0 <= progressStep < progressSteps.
    QString progressTitle;
    int progressSteps = 0;
    int progressStep = 0;
    RenderTab renderTab;      // the Render tab of the content window

    void start();
    void shutdown();
    // ImGui's frame for an interface framebuffer of width x height pixels.
    void new_frame(int width, int height, float dt);
    // Every window of the frame.
    void draw(Frame const& frame);
    // Renders into the framebuffer bound for drawing (cleared to transparent first), then
    // brings the GL state mirrors back in line with GL.
    void end_frame();
    // "ResetUI": every window back to its place at the next frame.
    void reset() { resetLayout = true; }

    // Opens the text window on one of the resource texts ("Controls", "License",
    // "ReleaseHistory"); the key sheet is ":/Docs/Shortcuts.txt".
    void openText(std::string const& entry);
    void toggleText(std::string const& entry);
    // True while any popup (the start window among them) is open.
    static bool popupOpen();

private:
    UI() = default;
    void drawLog(QString const& log);
    void drawProgress();
    void drawInfo(Frame const& frame);
    void drawText();
    void drawStart();
    void drawStatus(std::vector<std::string> const& lines);
    void drawNavigation(Texture2D const* navigation);
    // The content window (tTabsContent) at the right, below the navigation sphere: so far its
    // Render tab alone.
    void drawContent();
};

} // namespace vel
