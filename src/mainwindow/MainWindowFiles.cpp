// The file workflows of the main window: open (a worker reads into a private scene and the
// main thread takes it over), append, save, save as, backup, clear, recent files.
//
// Saving never loses data: the scene is written to a new file beside the old one, which
// takes the old one's place only when the whole write succeeded (Scene::saveN).
//
// Test hook: with VELLUMBRA_TEST_DIALOG set (FileDialogs.h), the question of an open answers
// "New Scene" as well.
//
// Index
// - dialogs
// - open and the scene worker
// - finishing a load
// - save, backup, clear
#include "mainwindow/MainWindow.h"

#include "Animation/Animation.h"
#include "Core/Communicate.h"
#include "OpenGL/FileDialogs.h"
#include "OpenGL/GLView.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/GLWidget.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneFile.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "mainwindow/ConfigFile.h"

#include <QCheckBox>
#include <QDialog>
#include <QDir>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QThreadPool>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrent>

namespace vel {

std::string CURRENT_FILE;
std::string LOADING_FILE;

namespace {

char const* const SCENE_FILTER = "All (*.vsc *.obj);;Scenes (*.vsc);;Meshes (*.obj)";

// ---- dialogs ---------------------------------------------------------------------------------

enum class OpenChoice { Replace, Append, Cancel };

// "New Scene", "Append Scene" or "Cancel", and whether to save the current scene first.
OpenChoice askOpenChoice(QWidget* parent, bool& saveFirst)
{
    saveFirst = false;
    if (DialogsAnsweredByTest())
        return OpenChoice::Replace;
    QDialog dialog(parent);
    dialog.setWindowTitle("VELLUMBRA");
    dialog.setFixedWidth(200);
    auto* layout = new QVBoxLayout(&dialog);
    auto* save = new QCheckBox("Save Current Scene", &dialog);
    layout->addWidget(save);
    auto* buttons = new QHBoxLayout;
    OpenChoice choice = OpenChoice::Cancel;
    for (auto [label, value] : {std::pair{"New Scene", OpenChoice::Replace}, std::pair{"Append Scene", OpenChoice::Append},
                                std::pair{"Cancel", OpenChoice::Cancel}}) {
        auto* button = new QPushButton(label, &dialog);
        QObject::connect(button, &QPushButton::clicked, &dialog, [&dialog, &choice, value = value] {
            choice = value;
            dialog.accept();
        });
        buttons->addWidget(button);
    }
    layout->addLayout(buttons);
    dialog.exec();
    saveFirst = save->isChecked();
    return choice;
}

// ---- open and the scene worker ---------------------------------------------------------------

// On a thread of the global pool: reads into a private scene and hands it over.
void sceneWorker(QString path, bool append)
{
    gDeleteLoadBuffers();
    QFileInfo info(path);
    auto* scene = new Scene;
    bool ok = false, isTool = false;
    if (info.suffix().toLower() != "obj") {
        ok = scene->load(path.toStdString());
        if (FILE_LOAD_ERROR) {
            delete scene;
            scene = new Scene;
            FILE_OLD = false;
            FILE_LOAD_ERROR = false;
            LogInfo("Try to load using different format...", 1);
            ok = scene->load(path.toStdString());
        }
    } else if (Tool* tool = Scene::loadTool(path.toStdString())) {
        tool->setObject(true);
        if (tool->element)
            tool->pivotMatrix = tool->element->Transform(1);
        tool->Parent = scene->root;
        scene->root->children.push_back(tool);
        ok = isTool = true;
    }
    if (ok) {
        emit Communicate::instance().DoneThread(new SceneLoadResult{info, scene, isTool, append}, 0);
        return;
    }
    // The previous scene stays on screen; what the failed load read goes.
    History::Pause pause;
    for (UITool& entry : Scene::UITools)
        delete entry.tool;
    Scene::UITools.clear();
    delete scene;
    gDeleteLoadBuffers();
    LogInfo(QString("Cannot open '%1'.").arg(path), 2);
    QMetaObject::invokeMethod(
        main_window,
        [] {
            History::instance().enabled = History::instance().active = true;
            BlockAllActions(false, "");
        },
        Qt::QueuedConnection);
}

} // namespace

void MainWindow::OpenScene()
{
    if (gAllActionsBlocked)
        return;
    QString path = AskOpenFileName(this, "Open Scene", OPEN_SCENE_PATH, SCENE_FILTER);
    if (!path.isEmpty())
        OpenFile(path.toStdString(), false);
}

void MainWindow::OpenFile(std::string const& name, bool append)
{
    if (gAllActionsBlocked)
        return;
    FILE_OLD = true;
    FILE_LOAD_ERROR = false;
    QString path = QString::fromStdString(name);
    if (!QFileInfo::exists(path)) {
        if (QFileInfo::exists(path + ".vsc"))
            path += ".vsc";
        else if (QFileInfo::exists(path + ".obj"))
            path += ".obj";
        else
            return;
    }
    if (!append && !SceneIsEmpty()) {
        bool saveFirst = false;
        OpenChoice choice = askOpenChoice(this, saveFirst);
        if (choice == OpenChoice::Cancel)
            return;
        if (saveFirst && !BackupScene(false, false))
            return;
        append = choice == OpenChoice::Append;
    }
    LOADING_FILE = QFileInfo(path).absoluteFilePath().toStdString();
    BlockAllActions(true, append ? "Appending" : "Loading");
    // The undo list goes before anything is known of the file: its steps refer to the scene
    // a load may replace. Emptied here, on the thread that owns it.
    History& history = History::instance();
    history.clear();
    history.enabled = false;
    QtConcurrent::run(QThreadPool::globalInstance(), sceneWorker, path, append);
}

// ---- finishing a load --------------------------------------------------------------------------

void MainWindow::FinalizeThread(void* data, int kind)
{
    if (kind != 0)
        return;
    std::unique_ptr<SceneLoadResult> result(static_cast<SceneLoadResult*>(data));
    Scene& live = Scene::instance();
    Scene* loaded = result->scene;
    if (!result->append) {
        ClearScene(false);
        live.init(true);
        live.centre = loaded->centre;
        live.radius = loaded->radius;
        live.root = loaded->root;
        loaded->root = nullptr;
        live.dirty = true;
        delete loaded;
        if (gCameraBuf) {
            CameraState camera;
            gCameraBuf->seekg(0);
            if (camera.read(*gCameraBuf, FILE_VERSION) && main_view)
                main_view->loadCamera(camera);
        }
    } else {
        live.append(loaded);
    }
    toolBoxTools.insert(toolBoxTools.end(), Scene::UITools.begin(), Scene::UITools.end());
    Scene::UITools.clear();
    Animation::instance().Load(gAnimationBuf.get(), result->append, FILE_VERSION);
    // Common includes first: the layers compile against them.
    Rendering::instance().load_include_common_from_buffer(gIncludeCommonBuf.get(), !result->append);
    Rendering::instance().load_shader_layers_from_buffer(gShaderLayersBuf.get(), !result->append);

    QString absolute = result->file.absoluteFilePath();
    if (!absolute.startsWith(':')) {
        OPEN_SCENE_PATH = result->file.absolutePath().toStdString();
        AddRecentFile(absolute.toStdString());
        UpdateRecentFiles();
        SaveConfigFile();
        if (!result->isTool)
            SetCurrentFile(absolute);
    }
    gDeleteLoadBuffers();
    History& history = History::instance();
    history.enabled = history.active = true;
    BlockAllActions(false, "");
}

void MainWindow::SetCurrentFile(QString const& path)
{
    CURRENT_FILE = path.toStdString();
    setWindowFilePath(path);
}

// ---- save, backup, clear -----------------------------------------------------------------------

void MainWindow::SaveScene()
{
    if (gAllActionsBlocked)
        return;
    if (SceneIsEmpty()) {
        LogInfo("Scene is empty!", 1);
        return;
    }
    if (CURRENT_FILE.empty()) {
        SaveAsScene();
        return;
    }
    if (QFileInfo(QString::fromStdString(CURRENT_FILE)).suffix().toLower() == "vsc") {
        SaveFile(CURRENT_FILE);
        return;
    }
    QString path = AskSaveFileName(this, "Save Scene", OPEN_SCENE_PATH, SCENE_FILTER);
    if (!path.isEmpty())
        SaveFile(path.toStdString());
}

void MainWindow::SaveAsScene()
{
    if (gAllActionsBlocked)
        return;
    QString path = AskSaveFileName(this, "Save As Scene", OPEN_SCENE_PATH, SCENE_FILTER);
    if (!path.isEmpty())
        SaveFile(path.toStdString());
}

bool MainWindow::SaveFile(std::string const& name)
{
    BlockAllActions(true, "Saving");
    Scene& scene = Scene::instance();
    scene.prepareSave();
    QString path = QString::fromStdString(name);
    QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != "vsc" && suffix != "obj")
        path += ".vsc";
    if (suffix == "obj" && glWidget) {
        // Written in the next frame, outside the interface's; that frame unblocks.
        glWidget->saveObjPath = path.toStdString();
        return true;
    }
    Scene::UITools = toolBoxTools;
    emit Communicate::instance().beginProgress("Saving", 1);
    bool saved = scene.save(path.toStdString());
    emit Communicate::instance().setProgress(1);
    Scene::UITools.clear();
    if (saved) {
        QString absolute = QFileInfo(path).absoluteFilePath();
        SetCurrentFile(absolute);
        OPEN_SCENE_PATH = QFileInfo(path).absolutePath().toStdString();
        AddRecentFile(absolute.toStdString());
        UpdateRecentFiles();
        SaveConfigFile();
        LogInfo(QString("Saved '%1'").arg(absolute), 0);
    } else {
        LogInfo(QString("Cannot save '%1': the file could not be written; the old file is unchanged.").arg(path), 2);
    }
    BlockAllActions(false, "");
    return saved;
}

bool MainWindow::BackupScene(bool always, bool unconditional)
{
    if (!always && SceneIsEmpty())
        return true;
    if (!unconditional) {
        auto answer = QMessageBox::question(this, "VELLUMBRA", "Save current scene?",
                                            QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        if (answer == QMessageBox::Cancel)
            return false;
        if (answer == QMessageBox::No)
            return true;
    }
    if (CURRENT_FILE.empty()) {
        QString path = AskSaveFileName(this, "Save As Scene", OPEN_SCENE_PATH, SCENE_FILTER);
        return !path.isEmpty() && SaveFile(path.toStdString());
    }
    return SaveFile(CURRENT_FILE);
}

void MainWindow::RenderToFile()
{
    if (!main_view)
        return;
    QString path = AskSaveFileName(this, "Save Image", OPEN_SCENE_PATH, "Images (*.png *.jpg)", "png");
    if (path.isEmpty())
        return;
    main_view->saveImage(path.toStdString(), main_view->renderSamples);
}

void MainWindow::ClearScene(bool keepUI)
{
    SetCurrentFile("");
    History::instance().clear();
    Animation::instance().clear();
    deleteToolBoxTools();
    if (!keepUI)
        emit Communicate::instance().reset_ui();
}

void MainWindow::deleteToolBoxTools()
{
    History::Pause pause;
    for (UITool& entry : toolBoxTools)
        delete entry.tool;
    toolBoxTools.clear();
}

} // namespace vel
