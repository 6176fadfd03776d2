// The entry of the application: predicates, the GL surface format, the window, the loop.

#include "Math/ExactPredicates.h"
#include "OpenGL/Resources.h"
#include "OpenGL/GLWidget.h"
#include "mainwindow/MainWindow.h"

#include <QApplication>
#include <QScreen>
#include <QSocketNotifier>
#include <QSurfaceFormat>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

// A terminate request closes the window as the user would: through its close event.
void OnTerminate(int)
{
    char c = 1;
    (void)!write(signalPipe[0], &c, 1);
}

} // namespace

int main(int argc, char* argv[])
{
    vel::InitExactPredicates();

    QSurfaceFormat format;
    format.setDepthBufferSize(24);
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    // The repaint timer sets the frame rate, never the display.
    format.setSwapInterval(0);
    QSurfaceFormat::setDefaultFormat(format);

    QApplication* app = new QApplication(argc, argv);
    QApplication::setApplicationVersion("0.9.9.7");
    vel::InitResources();

    vel::MainWindow* window = new vel::MainWindow;

    QSocketNotifier* terminate = nullptr;
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        terminate = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read);
        QObject::connect(terminate, &QSocketNotifier::activated, window, [window] {
            char c;
            (void)!read(signalPipe[1], &c, 1);
            window->close();
        });
        std::signal(SIGTERM, OnTerminate);
    }

    // Without a window manager nothing maximises: take the screen's size first.
    // That sizing stands for the maximising resize, which then may never come.
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        window->resize(screen->availableGeometry().size());
        window->glWidget->showCounter = 1;
    }
    window->showMaximized();
    int result = app->exec();
    delete terminate;
    delete window;
    delete app;
    return result;
}
