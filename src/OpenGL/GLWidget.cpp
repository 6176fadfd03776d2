// GLWidget: the frame loop and the widget's event handlers.
//
// Index
// - construction, GL set-up and teardown
// - the frame: paintGL and its steps (numbered as they run)
// - input events: they only store state, the frame acts on it
// - slots of the Communicate hub
// - the test report (VELLUMBRA_REPORT)
// - BlockAllActions
#include "OpenGL/GLWidget.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "OpenGL/AssembleActions.h"
#include "OpenGL/Environment.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLState.h"
#include "OpenGL/GLView.h"
#include "OpenGL/ViewportActions.h"
#include "OpenGL/ViewportInput.h"
#include "OpenGL/Gui/UI.h"
#include "OpenGL/Keyboard.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "Scene/SceneFile.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/XYZSphere.h"
#include "Scene/Element.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Material.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "mainwindow/ConfigFile.h"

#include <QCursor>
#include <QFile>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QOpenGLContext>
#include <QScreen>
#include <QTabletEvent>
#include <QWheelEvent>

#include <imgui.h>

#include <cstdlib>
#include <sys/resource.h>
#include <fstream>

namespace vel {

GLWidget* main_screen = nullptr;
bool gAllActionsBlocked = false;
std::string gThreadActionName;
int ActionMode = 2;
int iActionMode = 2;
int UnblockActionMode = 2;

// Pen pressure follows the tablet only while this holds (the brush settings own it later).
static bool BrushPressureSize = true;

namespace {

constexpr int NAVIGATION_SIZE = 120;
constexpr float NAVIGATION_GREY = 0.13333334f;
constexpr int LOG_LINES_MAX = 500; // older lines fall off the end of the log

Shared<Texture2D> NewRGBA8(int width, int height)
{
    return Shared<Texture2D>(new Texture2D(width, height, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, GL_CLAMP_TO_EDGE, GL_LINEAR));
}

// ImGui 1.86 indexes KeysDown by small numbers of our choosing: Qt's key code -> slot.
struct UIKey {
    int qt;
    ImGuiKey imgui;
};
UIKey const UI_KEYS[] = {
    {Qt::Key_Tab, ImGuiKey_Tab},           {Qt::Key_Left, ImGuiKey_LeftArrow},
    {Qt::Key_Right, ImGuiKey_RightArrow},  {Qt::Key_Up, ImGuiKey_UpArrow},
    {Qt::Key_Down, ImGuiKey_DownArrow},    {Qt::Key_PageUp, ImGuiKey_PageUp},
    {Qt::Key_PageDown, ImGuiKey_PageDown}, {Qt::Key_Home, ImGuiKey_Home},
    {Qt::Key_End, ImGuiKey_End},           {Qt::Key_Insert, ImGuiKey_Insert},
    {Qt::Key_Delete, ImGuiKey_Delete},     {Qt::Key_Backspace, ImGuiKey_Backspace},
    {Qt::Key_Space, ImGuiKey_Space},       {Qt::Key_Return, ImGuiKey_Enter},
    {Qt::Key_Escape, ImGuiKey_Escape},     {Qt::Key_Enter, ImGuiKey_KeyPadEnter},
    {Qt::Key_A, ImGuiKey_A},               {Qt::Key_C, ImGuiKey_C},
    {Qt::Key_V, ImGuiKey_V},               {Qt::Key_X, ImGuiKey_X},
    {Qt::Key_Y, ImGuiKey_Y},               {Qt::Key_Z, ImGuiKey_Z},
};

int UIKeySlot(int qtKey)
{
    for (std::size_t i = 0; i < std::size(UI_KEYS); ++i)
        if (UI_KEYS[i].qt == qtKey)
            return int(i) + 1;
    return -1;
}

void BindDefaultFramebuffer(GLWidget* widget)
{
    GLuint id = widget->defaultFramebufferObject();
    glBindFramebuffer(GL_FRAMEBUFFER, id);
    FBO::DRAW_ID = id;
    FBO::READ_ID = id;
}

void ForgetShader()
{
    Shader::Current = nullptr;
    Shader::id = 0;
    glUseProgram(0);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Construction, GL set-up and teardown

GLWidget::GLWidget(QWidget* parent)
    : QOpenGLWidget(parent)
{
    main_screen = this;
    uiFramebuffer.reset(new FBOTexture(NewRGBA8(std::max(1, width()), std::max(1, height()))));
    navigationTexture = NewRGBA8(NAVIGATION_SIZE, NAVIGATION_SIZE);
    navigation.reset(new FBOTexture(navigationTexture));
    view = new GLView(std::max(1, width()), std::max(1, height()));
    main_view = view;
    // Scene files keep the view's camera.
    gSaveCamera = [](CameraState& state) {
        if (!main_view)
            return false;
        main_view->saveCamera(state);
        return true;
    };
    ActionMode = iActionMode = 2;
    uiScale = UI_SCALE;
    useAutoScale = UI_SCALE_AUTO;

    setFocusPolicy(Qt::StrongFocus);
    setUpdateBehavior(QOpenGLWidget::PartialUpdate);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAttribute(Qt::WA_TabletTracking);
    frameClock.start();
    buttons.assign(3, false);
    read_mouse();

    Communicate& hub = Communicate::instance();
    connect(&hub, &Communicate::LogInfo, this, &GLWidget::LogInfo);
    connect(&hub, &Communicate::openMenu, this, &GLWidget::openMenu);
    connect(&hub, &Communicate::changeMaterialObjects, this, &GLWidget::openMaterial);
    connect(&hub, &Communicate::tool_material, this, &GLWidget::openToolBoxMaterial);
    connect(&hub, &Communicate::reset_ui, this, &GLWidget::reset_ui);
    connect(&hub, &Communicate::BlockAllActions, &hub, &vel::BlockAllActions, Qt::DirectConnection);
    // Loads report from their worker: these arrive queued.
    connect(&hub, &Communicate::beginProgress, this, [](QString const& title, int steps) {
        UI& ui = UI::instance();
        ui.progressTitle = title;
        ui.progressSteps = steps;
        ui.progressStep = 0;
    });
    connect(&hub, &Communicate::setProgress, this, [](int step) { UI::instance().progressStep = step; });
    connect(
        &hub, &Communicate::turntable, &hub, [](bool on) { main_view->turntable = on; }, Qt::DirectConnection);
}

GLWidget::~GLWidget()
{
    // Everything that holds GL objects goes while the context is still there.
    makeCurrent();
    UI::instance().shutdown();
    XYZSphere::instance().clear();
    uiFramebuffer.reset();
    navigation.reset();
    navigationTexture = Shared<Texture2D>();
    delete view;
    view = main_view = nullptr;
    gSaveCamera = nullptr;
    Scene::instance().init(true);
    Rendering::instance().closeResources();
    ShaderManager::instance().clear();
    if (vertexArray)
        glDeleteVertexArrays(1, &vertexArray);
    doneCurrent();
    main_screen = nullptr;
}

void GLWidget::initializeGL()
{
    int version = gladLoadGL([](char const* name) {
        return reinterpret_cast<GLADapiproc>(QOpenGLContext::currentContext()->getProcAddress(name));
    });
    VEL_ASSERT_MSG(version != 0, "Cannot load OpenGL functions!");
    VEL_ASSERT_MSG(GLAD_VERSION_MAJOR(version) * 10 + GLAD_VERSION_MINOR(version) >= 33, "OpenGL 3.3 required!");
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    glDescription = std::string("OpenGL ") + reinterpret_cast<char const*>(glGetString(GL_VERSION)) + " on " +
                    reinterpret_cast<char const*>(glGetString(GL_RENDERER));
    // Image-based light: the environment's levels are filtered on the GPU once, here.
    vel::Rendering::instance().openResources();
    VEL_ASSERT(vel::Rendering::instance().environment()->compile());
    VEL_ASSERT(vel::Rendering::instance().BRDF->compile());
    UI::instance().start();
    for (std::size_t i = 0; i < std::size(UI_KEYS); ++i)
        ImGui::GetIO().KeyMap[UI_KEYS[i].imgui] = int(i) + 1;
    setCap(!CAP_FPS);
    setCap(!CAP_FPS);
    connect(&timer, &QTimer::timeout, this, QOverload<>::of(&QWidget::update));
    vel::LogInfo(QString::fromStdString(glDescription), 0);
}

void GLWidget::setCap(bool cap)
{
    CAP_FPS = cap;
    if (cap)
        timer.start(int(1000 / FPS_MAX));
    else
        timer.stop();
}

void GLWidget::resizeGL(int w, int h)
{
    QScreen* s = screen();
    if (s && s->logicalDotsPerInchX() > 0)
        uiScaleAuto = std::min(1.0f, float(s->physicalDotsPerInchX() / s->logicalDotsPerInchX()));
    if (UI::popupOpen() && uiBase_start > 3)
        uiBase_close_popups = true;
    viewportChanged = true;
    setFocus(Qt::OtherFocusReason);
    showCounter = std::min(showCounter + 1, 2);
}

// ---------------------------------------------------------------------------------------------
// The frame

void GLWidget::paintGL()
{
    // 1. Clock and frame-rate ring.
    double dt = frameClock.nsecsElapsed() * 1e-9;
    frameClock.restart();
    totalTime += dt;
    frameTimes[fpsIndex] = dt;
    fpsIndex = (fpsIndex + 1) % fpsCapacity;
    double sum = 0;
    for (double t : frameTimes)
        sum += t;
    Rendering::instance().fps = float(fpsCapacity / sum);

    // 2. Device size.
    if (viewportChanged) {
        viewportChanged = false;
        GLint viewport[4];
        glGetIntegerv(GL_VIEWPORT, viewport);
        int w = viewport[2], h = viewport[3];
        deviceWidth = w;
        deviceHeight = h;
        ScaleFactor = float(w / std::max(1, width()));
        VEL_ASSERT(ScaleFactor == h / std::max(1, height()));
    }

    // 3. The interface framebuffer follows the scale.
    float uis = effectiveUIScale();
    uiFramebuffer->resize(std::max(1, int(deviceWidth * uis)), std::max(1, int(deviceHeight * uis)));

    // 4, 5.
    GLInit();
    glDepthFunc(GL_LEQUAL);
    drawNavigation();

    // 6, 7. Pointer and input focus.
    read_mouse();
    bool popup = UI::popupOpen();
    bool block = popup || dialogOpen || popupBlock;
    bool inside = false;
    if (!block && !menuOpen && !ImGui::GetIO().WantCaptureMouse) {
        float w = deviceWidth * view->scale, h = deviceHeight * view->scale;
        inside = mouseRead.x >= 0 && mouseRead.x < w && mouseRead.y >= 0 && mouseRead.y < h;
    }
    float counted = 0;
    if (mouseRead.anyPressed() && inside) {
        view->captured = true;
        counted = wheel;
    } else {
        if (mouseRead.anyReleased() && view->captured)
            view->captured = false;
        else if (!mouseRead.anyHeld() || block)
            view->outside = !inside;
        if (inside)
            counted = wheel;
    }
    mouseRead.wheel = counted;
    wheel = 0;
    mouse = mouseRead;

    // 9.
    view->resize(deviceWidth, deviceHeight);

    if (!saveObjPath.empty()) {
        // 10. The conversion a save needs is done in a group and taken back at once.
        History& history = History::instance();
        history.superBegin("save obj", false);
        Scene::instance().saveOBJ(Scene::instance().root->children, saveObjPath, true);
        history.superEnd();
        history.undo();
        history.pop();
        saveObjPath.clear();
        emit Communicate::instance().BlockAllActions(false, "");
        BindDefaultFramebuffer(this);
        glBindVertexArray(vertexArray);
    } else {
        // 11. The frame proper.
        FBO* shown = nullptr;
        if (view->MainLoopPreRender(totalTime, dt)) {
            shown = view->MainLoopRender(dt);
            view->MainLoopPostRender();
        }
        BindDefaultFramebuffer(this);
        glBindVertexArray(vertexArray);
        if (shown) {
            glViewport(0, 0, deviceWidth, deviceHeight);
            if (shown->width == deviceWidth && shown->height == deviceHeight) {
                // Same size, opaque: a framebuffer blit, which the software rasteriser does as
                // a plain memory copy instead of a textured pass over every pixel.
                VEL_ASSERT(shown->enableRead());
                glBlitFramebuffer(0, 0, deviceWidth, deviceHeight, 0, 0, deviceWidth, deviceHeight,
                                  GL_COLOR_BUFFER_BIT, GL_NEAREST);
                BindDefaultFramebuffer(this);
            } else {
                gl_Depth_Test.set(false);
                GLCopy(shown->color(0));
            }
        }
    }
    ForgetShader();

    // 13. The interface, blended over the image.
    if (uiVisible) {
        imguiFrame();
        BindDefaultFramebuffer(this);
        glBindVertexArray(vertexArray);
        glViewport(0, 0, deviceWidth, deviceHeight);
        gl_Depth_Test.set(false);
        // Only where the interface drew: a full-screen blend costs the software rasteriser a
        // good part of a frame, and most of the screen is the view.
        float const* d = UI::instance().drawn;
        float s = float(deviceWidth) / float(uiFramebuffer->width);
        int x0 = int(d[0] * s), x1 = int(std::ceil(d[2] * s));
        int y0 = deviceHeight - int(std::ceil(d[3] * s)), y1 = deviceHeight - int(d[1] * s);
        if (x1 > x0 && y1 > y0) {
            glEnable(GL_SCISSOR_TEST);
            glScissor(x0, y0, x1 - x0, y1 - y0);
            glEnable(GL_BLEND);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            glBlendEquation(GL_FUNC_ADD);
            GLCopy(uiFramebuffer->texture());
            ForgetShader();
            glDisable(GL_BLEND);
            glDisable(GL_SCISSOR_TEST);
        }
    }

    // 14. Deferred work; what it pushes runs next frame.
    std::vector<std::function<void()>> callbacks;
    callbacks.swap(ui_callbacks);
    for (auto& callback : callbacks)
        callback();

    // 15.
    BindDefaultFramebuffer(this);
    UI& ui = UI::instance();
    if (ui.startRequest >= 0) {
        startSceneRequest = ui.startRequest;
        startSceneAsk = false;
        ui.startRequest = -1;
    }
    if (startSceneRequest >= 0) {
        int request = startSceneRequest;
        startSceneRequest = -1;
        uiBase_start = 3;
        if (request != 1)
            emit Communicate::instance().StartScene(request, startSceneAsk);
    }

    // 16. The first finished frame after two resizes shows the window.
    if (showCounter == 2) {
        showCounter = 3;
        emit Communicate::instance().ShowWindow();
    }

    chooseCursor();
    writeReport("frame");

    if (!CAP_FPS)
        update();
}

void GLWidget::drawNavigation()
{
    VEL_ASSERT(navigation->enableDraw());
    VEL_ASSERT(XYZSphere::instance().enableShader());
    glViewport(0, 0, NAVIGATION_SIZE, NAVIGATION_SIZE);
    glClearColor(NAVIGATION_GREY, NAVIGATION_GREY, NAVIGATION_GREY, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    Shader::ProjectionModelViewMatrix = XYZSphere::Transform(view->camera.rotation);
    XYZSphere::instance().render();
    glViewport(0, 0, deviceWidth, deviceHeight);
}

void GLWidget::read_mouse()
{
    QPoint p = mapFromGlobal(QCursor::pos());
    float f = ScaleFactor * (view ? view->scale : 1.0f);
    QWriteLocker locker(&lock);
    if (pressPending) {
        // The press frame stands where the button went down; the motion since then comes
        // with the next frame as an ordinary drag.
        p = pressPosition;
        pressPending = false;
    }
    Mouse& m = mouseRead;
    m.moveTo(p.x() * f, p.y() * f);
    m.pressure = pressure;
    m.pleft = m.left;
    m.pmiddle = m.middle;
    m.pright = m.right;
    // A click shorter than a frame is seen held for one frame and released in the next.
    m.left = buttons[0] || clicked[0];
    m.middle = buttons[2] || clicked[2];
    m.right = buttons[1] || clicked[1];
    clicked.assign(3, false);
}

void GLWidget::imguiUpdateInput()
{
    ImGuiIO& io = ImGui::GetIO();
    float f = effectiveUIScale() / view->scale;
    bool stuck = (io.MouseDown[0] && !mouse.left) || (io.MouseDown[1] && !mouse.right) ||
                 (io.MouseDown[2] && !mouse.middle);
    if (view->captured && !stuck) {
        io.MousePos = ImVec2(-1, -1);
    } else {
        mouseui = mouse;
        for (float* v : {&mouseui.px, &mouseui.py, &mouseui.x, &mouseui.y, &mouseui.dx, &mouseui.dy})
            *v *= f;
        io.MousePos = ImVec2(mouseui.x, mouseui.y);
        io.MouseDown[0] = mouse.left;
        io.MouseDown[1] = mouse.right;
        io.MouseDown[2] = mouse.middle;
    }
    // Keys: a key that changes twice before a frame keeps its second change for the next.
    std::vector<int> changed;
    std::size_t i = 0;
    for (; i < uiKeys.size(); ++i) {
        int slot = uiKeys[i].first;
        if (std::find(changed.begin(), changed.end(), slot) != changed.end())
            break;
        changed.push_back(slot);
        io.KeysDown[slot] = uiKeys[i].second;
    }
    uiKeys.erase(uiKeys.begin(), uiKeys.begin() + long(i));
    // The polled keys, or where they cannot be polled, what the last key event said.
    io.KeyCtrl = keys.control() || (keyModifiers & Qt::ControlModifier);
    io.KeyShift = keys.shift() || (keyModifiers & Qt::ShiftModifier);
    io.KeyAlt = keys.alt() || (keyModifiers & Qt::AltModifier);
}

void GLWidget::imguiFrame()
{
    imguiUpdateInput();
    UI& ui = UI::instance();
    ui.new_frame(uiFramebuffer->width, uiFramebuffer->height, float(frameTimes[(fpsIndex + 9) % 10]));
    UI::Frame frame;
    frame.fps = Rendering::instance().fps;
    frame.navigation = navigationTexture.get();
    frame.status = view->input->statusLines();
    frame.log = &logText;
    frame.gl = glDescription;
    ui.draw(frame);
    VEL_ASSERT(uiFramebuffer->enableDraw());
    glViewport(0, 0, uiFramebuffer->width, uiFramebuffer->height);
    ui.end_frame();
    // ImGui rebinds its own vertex array; ours must be current again.
    glBindVertexArray(vertexArray);
}

void GLWidget::chooseCursor()
{
    Qt::CursorShape shape = Qt::ArrowCursor;
    bool inside = view->inside();
    if ((view->idle() && Rendering::instance().idleTime > 1.0 && inside) ||
        (view->hideCursor && !UI::popupOpen()))
        shape = Qt::BlankCursor;
    else if (view->state == 10)
        shape = Qt::ForbiddenCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

// ---------------------------------------------------------------------------------------------
// Input events: they store state; the frame acts on it.

void GLWidget::mousePressEvent(QMouseEvent* event)
{
    QWriteLocker locker(&lock);
    bool const first = !buttons[0] && !buttons[1] && !buttons[2] && !clicked[0] && !clicked[1] && !clicked[2];
    if (first) {
        pressPosition = event->pos();
        pressPending = true;
    }
    Qt::MouseButtons b = event->buttons();
    buttons = {bool(b & Qt::LeftButton), bool(b & Qt::RightButton), bool(b & Qt::MiddleButton)};
    for (int i = 0; i < 3; ++i)
        clicked[i] = clicked[i] || buttons[i];
}

void GLWidget::mouseReleaseEvent(QMouseEvent* event)
{
    QWriteLocker locker(&lock);
    Qt::MouseButtons b = event->buttons();
    buttons = {bool(b & Qt::LeftButton), bool(b & Qt::RightButton), bool(b & Qt::MiddleButton)};
}

void GLWidget::wheelEvent(QWheelEvent* event)
{
    QWriteLocker locker(&lock);
    float delta = float(event->angleDelta().y());
    if (UI::instance().started)
        ImGui::GetIO().MouseWheel += delta / 100.0f;
    wheel += penState == 2 ? -delta : delta;
    Qt::MouseButtons b = event->buttons();
    buttons = {bool(b & Qt::LeftButton), bool(b & Qt::RightButton), bool(b & Qt::MiddleButton)};
}

void GLWidget::tabletEvent(QTabletEvent* event)
{
    QWriteLocker locker(&lock);
    switch (event->type()) {
    case QEvent::TabletMove:
        if (BrushPressureSize)
            pressure = float(event->pressure());
        break;
    case QEvent::TabletPress:
        penState = 2;
        pressure = BrushPressureSize ? float(event->pressure()) : 1.0f;
        break;
    case QEvent::TabletRelease:
    case QEvent::TabletEnterProximity:
        penState = 1;
        if (BrushPressureSize)
            pressure = 0;
        break;
    case QEvent::TabletLeaveProximity:
        penState = 0;
        if (BrushPressureSize)
            pressure = 1;
        break;
    default:
        break;
    }
    event->ignore(); // the mouse events Qt synthesises carry the buttons
}

// Focus may come with the click that activates the window, after its press: taking the
// buttons from Qt rather than clearing them keeps that press held, and still drops a button
// whose release went to another window.
void GLWidget::syncButtons()
{
    QWriteLocker locker(&lock);
    Qt::MouseButtons b = QGuiApplication::mouseButtons();
    buttons = {bool(b & Qt::LeftButton), bool(b & Qt::RightButton), bool(b & Qt::MiddleButton)};
}

void GLWidget::focusInEvent(QFocusEvent* event)
{
    view->enterEvent();
    syncButtons();
    event->accept();
}

void GLWidget::focusOutEvent(QFocusEvent* event)
{
    view->leaveEvent();
    syncButtons();
    event->accept();
}

void GLWidget::keyReleaseEvent(QKeyEvent* event)
{
    keyModifiers = event->modifiers();
    int slot = UIKeySlot(event->key());
    if (slot > 0 && !event->isAutoRepeat())
        uiKeys.emplace_back(slot, false);
}

void GLWidget::keyPressEvent(QKeyEvent* event)
{
    int key = event->key();
    Qt::KeyboardModifiers mods = event->modifiers();
    keyModifiers = mods;
    bool ctrl = mods & Qt::ControlModifier;
    bool shift = mods & Qt::ShiftModifier;
    bool started = uiBase_start >= 3;
    bool popup = UI::popupOpen();

    if (UI::instance().started) {
        int slot = UIKeySlot(key);
        if (slot > 0)
            uiKeys.emplace_back(slot, true);
        for (QChar c : event->text())
            if (c.isPrint())
                ImGui::GetIO().AddInputCharacter(c.unicode());
    }

    // 1. Escape: its edge, and it closes popups (the start window among them).
    if (key == Qt::Key_Escape) {
        keys.press(key);
        if (popup)
            uiBase_close_popups = true;
    }
    // 2. The key ` (also with Ctrl, which some layouts report as its own code).
    if (key == Qt::Key_QuoteLeft || (ctrl && event->nativeVirtualKey() == Qt::Key_QuoteLeft)) {
        if (ctrl)
            uiVisible = !uiVisible;
        else if (shift && started)
            Rendering::instance().HalfsizeViewport = !Rendering::instance().HalfsizeViewport;
        else if (view->idle() && uiVisible && started)
            uiBase_start = 0;
        return;
    }
    // 3, 4.
    if (gAllActionsBlocked || !started)
        return;
    // 5. Under a popup only the interface's function keys act.
    if (popup) {
        if (key == Qt::Key_F11)
            toggleFullScreen();
        return;
    }
    if (ImGui::GetIO().WantTextInput)
        return;
    // 6.
    keys.press(key);
    if (view->input->keyPressed(key, ctrl, shift))
        return;
    UI& ui = UI::instance();
    switch (key) {
    case Qt::Key_I:
        if (shift)
            ui.showInfo = !ui.showInfo;
        else if (!ctrl)
            ui.toggleText("Controls");
        break;
    case Qt::Key_Z:
        if (ctrl && view->idle()) {
            if (shift)
                view->REDO();
            else
                view->UNDO();
        }
        break;
    case Qt::Key_N:
        if (ctrl && view->idle())
            uiBase_start = 0;
        break;
    case Qt::Key_O:
        if (ctrl && view->idle())
            emit Communicate::instance().OpenScene();
        break;
    case Qt::Key_S:
        if (ctrl && view->idle()) {
            if (shift)
                emit Communicate::instance().SaveAsScene();
            else
                emit Communicate::instance().SaveScene();
        }
        break;
    case Qt::Key_B:
        if (!ctrl && !shift && view->idle())
            Rendering::instance().showBoundingBoxes = !Rendering::instance().showBoundingBoxes;
        break;
    case Qt::Key_R:
        if (!ctrl)
            CycleRenderStyle(shift);
        break;
    case Qt::Key_W:
        if (shift && !ctrl)
            Rendering::instance().wireframe = !Rendering::instance().wireframe;
        break;
    case Qt::Key_Delete:
        if (view->idle())
            AssembleActions::Delete(view->hovered, ctrl);
        break;
    case Qt::Key_F11:
        toggleFullScreen();
        break;
    default:
        break;
    }
}

// R toggles MatCap and PBR; Shift+R goes through every composite style.
void GLWidget::CycleRenderStyle(bool all)
{
    Rendering& r = Rendering::instance();
    if (all)
        r.style = (r.style + 1) % (Rendering::STYLE_PBR + 1);
    else
        r.style = r.style == Rendering::STYLE_PBR ? Rendering::STYLE_MATCAP : Rendering::STYLE_PBR;
}

void GLWidget::toggleFullScreen()
{
    // Outside the interface's frame: the window's geometry changes under the widget.
    ui_callbacks.push_back([this] {
        QWidget* w = window();
        if (w->isFullScreen())
            w->showMaximized();
        else
            w->showFullScreen();
    });
}

// ---------------------------------------------------------------------------------------------
// Slots of the Communicate hub

void GLWidget::LogInfo(QString const& text, int type)
{
    lastLogMessage = text;
    lastLogType = type;
    logText = Communicate::PrependLogEntry(logText, text, type);
    int cut = -1, lines = 0;
    while (lines < LOG_LINES_MAX && (cut = logText.indexOf(QLatin1Char('\n'), cut + 1)) >= 0)
        ++lines;
    if (cut >= 0 && lines == LOG_LINES_MAX)
        logText.truncate(cut + 1);
}

void GLWidget::openMenu(void* tool)
{
    popupRequest = true;
    (void)tool;
}

void GLWidget::openMaterial(void* tool)
{
    (void)tool;
}

void GLWidget::openToolBoxMaterial(void* view)
{
    (void)view;
}

void GLWidget::ChangeMaterialObjects(Material const& material, int mask)
{
    std::vector<Tool*> tools;
    Scene& scene = Scene::instance();
    if (scene.selection.tool)
        scene.selectionObjects(tools, scene.findID(scene.selection.tool), true, true, false);
    for (Tool* t : tools)
        t->material.set(material, mask);
}

void GLWidget::reset_ui()
{
    UI::instance().reset();
}

void GLWidget::setScale(float s)
{
    if (s <= 0 || view->scale <= 0)
        return;
    view->scale = s;
    view->resize(width(), height());
}

void GLWidget::setFPS_MAX(float fps)
{
    ui_callbacks.push_back([this, fps] {
        FPS_MAX = fps;
        if (CAP_FPS)
            timer.start(int(1000 / FPS_MAX));
    });
}

// ---------------------------------------------------------------------------------------------
// The test report: with VELLUMBRA_REPORT set, a few lines of state for the application tests,
// at most ten times a second and at close.

void GLWidget::writeReport(char const* event)
{
    static char const* const path = std::getenv("VELLUMBRA_REPORT");
    if (!path)
        return;
    bool final = std::string(event) != "frame";
    if (!final && totalTime - reportClock < 0.1)
        return;
    reportClock = totalTime;
    // Processor time per frame since the last report, all threads (the software rasteriser's too).
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    double cpu = usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    double cpuPerFrame = view->frame > reportFrame ? (cpu - reportCpu) / double(view->frame - reportFrame) : 0.0;
    reportCpu = cpu;
    reportFrame = view->frame;
    QStringList lines = logText.split(QLatin1Char('\n'));
    std::string tmp = std::string(path) + ".tmp";
    {
        std::ofstream out(tmp, std::ios::trunc);
        out << "event=" << event << "\n"
            << "shown=" << (showCounter == 3) << "\n"
            << "opacity=" << window()->windowOpacity() << "\n"
            << "frames=" << view->frame << "\n"
            << "ui=" << uiVisible << "\n"
            << "text=" << (UI::instance().showText ? UI::instance().textTitle : "") << "\n"
            << "info=" << UI::instance().showInfo << "\n"
            << "start=" << uiBase_start << "\n"
            << "popup=" << UI::popupOpen() << "\n"
            << "fps=" << Rendering::instance().fps << "\n"
            << "cpu_ms=" << cpuPerFrame * 1000.0 << "\n"
            << "device=" << deviceWidth << "x" << deviceHeight << "\n"
            << "scale=" << ScaleFactor << "\n"
            << "mouse=" << mouse.x << "," << mouse.y << "\n"
            << "uifb=" << uiFramebuffer->width << "x" << uiFramebuffer->height << "\n"
            << "uiscale=" << uiScale << " auto=" << useAutoScale << "\n"
            << "objects=" << Scene::instance().root->children.size() << "\n"
            << "file=" << window()->windowFilePath().toStdString() << "\n"
            << "blocked=" << gAllActionsBlocked << "\n";
        // The Render tab's edge switch: its state and where it stands, in window pixels.
        auto const edge = UI::instance().renderTab.centres.find("Edge Detect");
        float const uiToWindow = float(width()) / float(std::max(1, uiFramebuffer->width));
        out << "edges=" << Rendering::instance().EdgeDetect << "\n";
        if (edge != UI::instance().renderTab.centres.end())
            out << "edges_at=" << edge->second[0] * uiToWindow << "," << edge->second[1] * uiToWindow << "\n";
        // The viewport's state: action, history, selection, hover, the camera's eye, the
        // point it orbits, the world size of a pixel at the last press, and where the first objects stand.
        ViewportInput const& in = *view->input;
        History const& history = History::instance();
        int selected = 0;
        for (Tool* t : Scene::instance().root->children)
            selected += (t->flags & Tool::FLAG_SELECTED) ? 1 : 0;
        Vector3<double> const eye = view->camera.eye();
        out.precision(12);
        out << "action=" << iAssembleAction << "\n"
            << "history=" << history.currentIndex + 1 << "/" << history.commands.size() << "\n"
            << "selected=" << selected << "\n"
            << "hover=" << in.hoverId << "\n"
            << "eye=" << eye.x << "," << eye.y << "," << eye.z << "\n"
            << "target=" << view->camera.position.x << "," << view->camera.position.y << ","
            << view->camera.position.z << "\n"
            << "unit=" << in.pressUnit << "\n"
            << "status=";
        for (std::string const& line : in.statusLines())
            out << line << "|";
        out << "\n";
        auto const& children = Scene::instance().root->children;
        for (size_t i = 0; i < children.size() && i < 4; ++i) {
            Matrix34<double> W;
            children[i]->worldTransform(W, true);
            Vector3<double> const p = W.translation();
            // Where it stands in the window's pixels.
            Vector3<double> const s = in.projection.point_world_to_screen(p);
            double const toWindow = double(view->windowWidth) / double(std::max(1, view->width));
            out << "pos" << i << "=" << p.x << "," << p.y << "," << p.z << "\n"
                << "screen" << i << "=" << s.x * toWindow << "," << s.y * toWindow << "\n";
        }
        out << "mode=" << iActionMode << "\n";
        // The first clay's shape as a checksum of its position bits, read back from the card
        // (only within a frame, where the context is current).
        if (!final && !children.empty())
            if (auto* clay = dynamic_cast<Clay*>(children.front()->element.get()); clay && clay->vertexBuffer) {
                std::vector<Vector3<float>> texels(std::size_t(clay->sizeV().x) * std::size_t(clay->sizeV().y));
                clay->get_positions(clay->positionRoles.current, texels.data());
                uint64_t hash = 1469598103934665603ull;
                auto const* bytes = reinterpret_cast<unsigned char const*>(texels.data());
                for (std::size_t b = 0; b < texels.size() * sizeof(Vector3<float>); ++b)
                    hash = (hash ^ bytes[b]) * 1099511628211ull;
                out << "shape0=" << std::hex << hash << std::dec << "\n";
            }
        for (int i = 0; i < 3 && i < lines.size(); ++i)
            out << "log" << i << "=" << lines[i].toStdString() << "\n";
    }
    std::rename(tmp.c_str(), path);
}

// ---------------------------------------------------------------------------------------------

void BlockAllActions(bool block, std::string const& name)
{
    if (block == gAllActionsBlocked)
        return;
    if (block) {
        UnblockActionMode = ActionMode;
        ActionMode = 1;
    } else {
        ActionMode = UnblockActionMode;
    }
    gAllActionsBlocked = block;
    gThreadActionName = name;
    mouse.clearEdges();
    keys.reset();
}

} // namespace vel
