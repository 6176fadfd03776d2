#include "OpenGL/GLView.h"

#include "Core/Assert.h"
#include "OpenGL/Keyboard.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "Scene/Element.h"

#include "Core/Communicate.h"
#include "OpenGL/FileDialogs.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/Tool.h"
#include "mainwindow/ConfigFile.h"

#include <glad/gl.h>

namespace vel {

GLView* main_view = nullptr;

namespace {
constexpr float BACKGROUND = 0.28f;        // grey of the empty stage
constexpr double HIDE_CURSOR_AFTER = 0.5;  // seconds without change
constexpr double TURNTABLE_SPEED = 0.5;    // radians per second
} // namespace

GLView::GLView(int width, int height)
    : width(width)
    , height(height)
    , image(new FBOTexture(Shared<Texture2D>(new Texture2D(width, height, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE))))
{
}

GLView::~GLView() = default;

bool GLView::MainLoopPreRender(double totalTime, double dt)
{
    if (!postRendered)
        return false;
    postRendered = false;
    Rendering& r = Rendering::instance();
    r.idleTime += dt;
    keys.read();
    if (turntable)
        turn(TURNTABLE_SPEED * dt);
    bool changed = mouseRead.dx != 0 || mouseRead.dy != 0 || mouseRead.wheel != 0 || mouseRead.anyPressed() ||
                   mouseRead.anyReleased();
    if (changed) {
        r.idleTime = 0;
        unchanged = 0;
        hideCursor = false;
    } else {
        unchanged += dt;
        hideCursor = unchanged > HIDE_CURSOR_AFTER && !outside;
    }
    (void)totalTime;
    return true;
}

FBO* GLView::MainLoopRender(double dt)
{
    VEL_ASSERT(image->enableDraw());
    glViewport(0, 0, width, height);
    glClearColor(BACKGROUND, BACKGROUND, BACKGROUND, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    (void)dt;
    return image.get();
}

void GLView::MainLoopPostRender()
{
    ++Element::GlobalUpdate;
    keys.clearEdges();
    mouseRead.wheel = 0;
    ++frame;
    postRendered = true;
}

void GLView::resize(int w, int h)
{
    if (w == width && h == height)
        return;
    width = w;
    height = h;
    image->resize(w, h);
}

void GLView::enterEvent()
{
    outside = false;
}

void GLView::leaveEvent()
{
    outside = true;
    captured = false;
}

void GLView::turn(double angle)
{
    rotation = rotation * Matrix3<double>::Rotation(0.0, angle, 0.0);
}

// The selected objects by themselves, in an object file or OBJ: the topmost selected tools,
// each with its subtree.
void GLView::quickSave()
{
    std::vector<Tool*> selected, pending(Scene::instance().root->children.rbegin(), Scene::instance().root->children.rend());
    while (!pending.empty()) {
        Tool* t = pending.back();
        pending.pop_back();
        if (t->flags & Tool::FLAG_SELECTED)
            selected.push_back(t);
        else
            pending.insert(pending.end(), t->children.rbegin(), t->children.rend());
    }
    if (selected.empty())
        return;
    QString path = AskSaveFileName(nullptr, "Save Object", OPEN_OBJECT_PATH,
                                   "All (*.vob *.obj);;Object (*.vob);;Meshes (*.obj)", "vob");
    if (path.isEmpty())
        return;
    if (!Scene::instance().save(selected, path.toStdString()))
        LogInfo(QString("Cannot save '%1': the file could not be written; the old file is unchanged.").arg(path), 2);
}

} // namespace vel
