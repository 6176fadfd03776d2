#include "mainwindow/MainWindow.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "OpenGL/GLView.h"
#include "OpenGL/GLWidget.h"
#include "OpenGL/Gui/UI.h"
#include "OpenGL/Shader.h"
#include "Scene/Element.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "mainwindow/AssetManager.h"
#include "mainwindow/ConfigFile.h"
#include "mainwindow/StartClock.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QTimer>

#include <cstdlib>

namespace vel {

MainWindow* main_window = nullptr;

namespace {
constexpr int SHOW_DELAY_MS = 200;
} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
{
    main_window = this;
    glWidget = new GLWidget(this);
    setWindowOpacity(0.0);
    setObjectName("MainWindow");
    setMinimumSize(100, 100);
    QWidget* central = new QWidget(this);
    QHBoxLayout* layout = new QHBoxLayout(central);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(glWidget);
    setCentralWidget(central);
    setWindowTitle("VELLUMBRA");

    LoadConfigFile();
    // Test hook: a scene that is not empty, for the question at close; "2": two linked
    // twins of one box side by side, for the viewport's tests; "3": a clay sphere, for the
    // sculpt strokes.
    char const* hook = std::getenv("VELLUMBRA_TEST_SCENE");
    if (hook && std::string(hook) == "3") {
        auto sphere = Mesh::Sphere(Mesh::Box(0), 5, 0, 2.0f);
        Tool* clay = new Tool(Shared<Element>(new Clay(sphere.get())));
        clay->addToParent(Scene::instance().root);
    } else if (hook) {
        Tool* first = new Tool(Shared<Element>(Mesh::Box().release()));
        first->addToParent(Scene::instance().root);
        if (std::string(hook) == "2") {
            first->objectMatrix = Matrix34<double>::Translation({-1.5, 0.0, 0.0});
            Tool* twin = new Tool(first->element, Matrix34<double>::Translation({1.5, 0.0, 0.0}));
            twin->addToParent(Scene::instance().root);
            first->link(twin);
            // Twins answer for each other as objects.
            first->setObject(true);
            twin->setObject(true);
        }
    }
    glWidget->uiScale = UI_SCALE;
    glWidget->useAutoScale = UI_SCALE_AUTO;
    glWidget->setCap(CAP_FPS);
    UpdateRecentFiles();
    AssetManager::instance();

    Communicate& hub = Communicate::instance();
    connect(&hub, &Communicate::ShowWindow, this, &MainWindow::ShowOpaque);
    connect(&hub, &Communicate::StartScene, this, &MainWindow::StartScene);
    connect(&hub, &Communicate::NewScene, this, &MainWindow::NewScene);
    // File work waits for the event loop: dialogs and the question of an open must not run
    // inside a frame or a key handler.
    connect(&hub, &Communicate::OpenScene, this, &MainWindow::OpenScene, Qt::QueuedConnection);
    connect(&hub, &Communicate::SaveScene, this, &MainWindow::SaveScene, Qt::QueuedConnection);
    connect(&hub, &Communicate::RenderToFile, this, &MainWindow::RenderToFile, Qt::QueuedConnection);
    connect(&hub, &Communicate::SaveAsScene, this, &MainWindow::SaveAsScene, Qt::QueuedConnection);
    connect(
        &hub, &Communicate::OpenFile, this,
        [this](std::string const& path, bool append) {
            QTimer::singleShot(0, this, [this, path, append] { OpenFile(path, append); });
        },
        Qt::DirectConnection);
    connect(&hub, &Communicate::DoneThread, this, &MainWindow::FinalizeThread, Qt::QueuedConnection);
    connect(
        &hub, &Communicate::trace_mode, this, [this](bool on) { setWindowOpacity(on ? 0.75 : 1.0); },
        Qt::DirectConnection);
}

MainWindow::~MainWindow()
{
    main_window = nullptr;
}

bool MainWindow::SceneIsEmpty() const
{
    Root* root = Scene::instance().root;
    return (!root || root->children.empty()) && toolBoxTools.empty();
}

void MainWindow::UpdateRecentFiles()
{
    UI& ui = UI::instance();
    ui.recent.assign(RECENT_FILES.begin(), RECENT_FILES.end());
    ui.openRecent = [](std::string const& path) { emit Communicate::instance().OpenFile(path, false); };
}

void MainWindow::ShowOpaque()
{
    QTimer::singleShot(SHOW_DELAY_MS, this, [this] {
        setWindowOpacity(1.0);
        vel::LogInfo(QStringLiteral("Ready in %1 ms").arg(StartClock::Elapsed()), 0);
    });
}

void MainWindow::StartScene(int item, bool ask)
{
    // Item 0 is the empty scene; the others arrive with their sample scenes.
    if (item != 0)
        return;
    if (ask && !SceneIsEmpty() &&
        QMessageBox::question(this, "VELLUMBRA", "Unsaved information will be lost!\n\nContinue?") != QMessageBox::Yes)
        return;
    ClearScene(true);
    Scene::instance().init(false);
}

void MainWindow::NewScene()
{
    uiBase_start = 0;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (closed) {
        event->accept();
        return;
    }
    if (gAllActionsBlocked || (main_view && main_view->modal) || UI::popupOpen()) {
        uiBase_close_popups = true;
        uiBase_start = 3;
        event->ignore();
        return;
    }
    if (!SceneIsEmpty()) {
        QMessageBox box(QMessageBox::Question, "VELLUMBRA", "Unsaved information will be lost!\n\nExit?",
                        QMessageBox::Yes | QMessageBox::No, this);
        box.setDefaultButton(QMessageBox::No);
        if (box.exec() != QMessageBox::Yes) {
            event->ignore();
            return;
        }
    }
    closed = true;
    if (main_view)
        main_view->drawing = nullptr;
    AssetManager::instance().save();
    SaveConfigFile();
    AssetManager::instance().wait();
    History& history = History::instance();
    history.enabled = false;
    history.clear();
    deleteToolBoxTools();
    Communicate::instance().disconnect();
    delete glWidget;
    glWidget = nullptr;
    VEL_ASSERT(Tool::COUNT == 0);
    VEL_ASSERT(Element::COUNT == 0);
    VEL_ASSERT(Shader::COUNT == 0);
    event->accept();
}

} // namespace vel
