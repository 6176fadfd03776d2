// MainWindow: the one window of the application. Its only content is the GLWidget; it
// answers the requests that reach it through Communicate, and closes the program cleanly:
// nothing of the scene outlives it.
#pragma once

#include <QFileInfo>
#include <QMainWindow>

#include <string>
#include <vector>

namespace vel {

class GLWidget;
class Scene;
struct UITool;

extern std::string CURRENT_FILE; // the open scene; empty for a new one
extern std::string LOADING_FILE; // the file a worker is reading

// What a scene worker hands the main thread.
struct SceneLoadResult {
    QFileInfo file;
    Scene* scene = nullptr;
    bool isTool = false; // the file was a mesh and holds one tool
    bool append = false;
};

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    GLWidget* glWidget = nullptr;

    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    // Tool box and tools panel tools of the open scene, kept for the next save until the
    // tool boxes take them over.
    std::vector<UITool> toolBoxTools;

    bool SceneIsEmpty() const;
    // Rebuilds the recent-file entries of the interface from RECENT_FILES.
    void UpdateRecentFiles();
    void SetCurrentFile(QString const& path);

public slots:
    // Raises the opacity to 1 a moment after the first finished frame.
    void ShowOpaque();
    void StartScene(int item, bool ask);
    void NewScene();
    // The file workflows (MainWindowFiles.cpp).
    void OpenScene();
    void OpenFile(std::string const& path, bool append);
    void SaveScene();
    // Asks for an image file; the view writes the mean of its next renderSamples frames there.
    void RenderToFile();
    void SaveAsScene();
    // False, with a log line, when the file could not be written; the old file then stands.
    bool SaveFile(std::string const& path);
    // Asks whether to save a scene that is not empty; false when the user cancels or the
    // save fails. `always` asks about an empty scene too; `unconditional` saves unasked.
    bool BackupScene(bool always, bool unconditional);
    void ClearScene(bool keepUI);
    // On the main thread, when a worker is done: kind 0 a scene.
    void FinalizeThread(void* result, int kind);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void deleteToolBoxTools();
    bool closed = false; // the teardown ran; a second close event finds nothing to do
};

extern MainWindow* main_window;

} // namespace vel
