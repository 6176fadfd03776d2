// GLWidget: the one OpenGL widget of the main window. It hosts the viewport (GLView) and the
// whole interface, and runs the frame loop in paintGL.
//
// Index (GLWidget.cpp)
// - construction, GL set-up and teardown
// - the frame: paintGL and its steps
// - input events: they only store state, the frame acts on it
// - slots of the Communicate hub
// - the test report
//
// Qt's events arrive on the same thread as the paint, yet the button and tablet state is
// guarded by `lock` all the same: written by the event handlers, read by the frame.
#pragma once

// glad before any Qt OpenGL header.
#include <glad/gl.h>

#include "Memory/Shared.h"
#include "OpenGL/FBOTexture.h"

#include <QElapsedTimer>
#include <QOpenGLWidget>
#include <QReadWriteLock>
#include <QString>
#include <QTimer>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vel {

class GLView;
struct Material;

class GLWidget : public QOpenGLWidget {
    Q_OBJECT
public:
    QReadWriteLock lock;           // mouse button bits and tablet state
    std::string saveObjPath;       // a pending OBJ save; empty when none
    int startSceneRequest = -1;    // a pending start-scene request
    bool startSceneAsk = false;    // its second argument
    bool menuOpen = false;         // a menu is open: no viewport input at all
    bool dialogOpen = false;       // a dialog is open: blocks the viewport
    bool popupBlock = false;       // an interface popup of our own blocks the viewport
    QString logText;               // newest first
    QString lastLogMessage = QStringLiteral("Log");
    int lastLogType = 0;
    GLuint vertexArray = 0;        // bound for the life of the context, rebound after foreign use
    QTimer timer;                  // repaint timer
    QElapsedTimer frameClock;
    double totalTime = 0;          // seconds
    int fpsCapacity = 10;
    int fpsIndex = 0;
    std::vector<double> frameTimes = std::vector<double>(10, 1.0); // seconds, a ring
    bool viewportChanged = true;   // set by resizeGL
    int deviceWidth = 0;           // framebuffer size in device pixels
    int deviceHeight = 0;
    float ScaleFactor = 1.0f;      // device pixels per widget unit
    float uiScaleAuto = 1.0f;      // the screen's physical over logical DPI, at most 1
    float uiScale = 1.0f;          // the interface framebuffer over the device size
    bool useAutoScale = true;
    std::unique_ptr<FBOTexture> uiFramebuffer; // RGBA8, the interface, blended over the image
    std::vector<bool> buttons = std::vector<bool>(3, false); // left, right, middle
    float wheel = 0;               // accumulated between frames
    bool uiVisible = true;
    std::unique_ptr<FBOTexture> navigation; // 120 x 120, the axis sphere
    bool popupRequest = false;     // openMenu asks for the object menu
    GLView* view = nullptr;
    int showCounter = 0;           // 0 to 3: two resizes, then the first finished frame shows

    explicit GLWidget(QWidget* parent);
    ~GLWidget() override;

    // The interface scale in force: uiScale, times the automatic one when that is used.
    float effectiveUIScale() const { return useAutoScale ? uiScale * uiScaleAuto : uiScale; }
    void setCap(bool cap);

public slots:
    void LogInfo(QString const& text, int type);
    void openMenu(void* tool);
    void openMaterial(void* tool);
    void openToolBoxMaterial(void* view);
    void ChangeMaterialObjects(Material const& material, int mask);
    void reset_ui();
    void setScale(float s);
    void setFPS_MAX(float fps);
    void read_mouse();
    void imguiFrame();
    void imguiUpdateInput();

protected:
    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void tabletEvent(QTabletEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    std::vector<bool> clicked = std::vector<bool>(3, false); // went down since the last frame
    // Where the first button of a press went down: a frame that arrives after the pointer
    // has moved on still begins the gesture there, so a slow frame loses no drag.
    QPoint pressPosition;
    bool pressPending = false;
    // The buttons as Qt knows them, for when focus changes under a held button.
    void syncButtons();
    static void CycleRenderStyle(bool all);
    std::vector<std::pair<int, bool>> uiKeys; // key events for the interface, in order
    Qt::KeyboardModifiers keyModifiers;       // of the last key event
    Shared<Texture2D> navigationTexture;
    float pressure = 1.0f;
    int penState = 0; // 0 away, 1 near, 2 touching
    std::string glDescription;
    double reportClock = 0;
    double reportCpu = 0;  // process seconds at the last report
    long reportFrame = 0;

    void drawNavigation();
    void chooseCursor();
    void toggleFullScreen();
    void writeReport(char const* event);
};

extern GLWidget* main_screen;
extern bool gAllActionsBlocked;
extern std::string gThreadActionName;
extern int ActionMode;
extern int iActionMode;
extern int UnblockActionMode;

// Shared by the widget's frame and Communicate::BlockAllActions.
void BlockAllActions(bool block, std::string const& name);

} // namespace vel
