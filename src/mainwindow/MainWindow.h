// MainWindow: the one window of the application. Its only content is the GLWidget; it
// answers the requests that reach it through Communicate, and closes the program cleanly:
// nothing of the scene outlives it.
#pragma once

#include <QMainWindow>

#include <string>

namespace vel {

class GLWidget;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    GLWidget* glWidget = nullptr;

    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    bool SceneIsEmpty() const;
    // Rebuilds the recent-file entries of the interface from RECENT_FILES.
    void UpdateRecentFiles();

public slots:
    // Raises the opacity to 1 a moment after the first finished frame.
    void ShowOpaque();
    void StartScene(int item, bool ask);
    void NewScene();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    bool closed = false; // the teardown ran; a second close event finds nothing to do
};

extern MainWindow* main_window;

} // namespace vel
