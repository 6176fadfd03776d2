#include "OpenGL/FileDialogs.h"

#include <QFile>
#include <QFileDialog>

#include <cstdlib>

namespace vel {

namespace {

// The first line of the file the hook names: tests change the answer between dialogs.
QString testAnswer()
{
    QFile file(QString::fromLocal8Bit(std::getenv("VELLUMBRA_TEST_DIALOG")));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readLine(4096)).trimmed();
}

} // namespace

bool DialogsAnsweredByTest()
{
    return std::getenv("VELLUMBRA_TEST_DIALOG") != nullptr;
}

QString AskOpenFileName(QWidget* parent, QString const& title, std::string const& folder, QString const& filter)
{
    if (DialogsAnsweredByTest())
        return testAnswer();
    return QFileDialog::getOpenFileName(parent, title, QString::fromStdString(folder), filter);
}

QString AskSaveFileName(QWidget* parent, QString const& title, std::string const& folder, QString const& filter,
                        QString const& defaultSuffix)
{
    if (DialogsAnsweredByTest())
        return testAnswer();
    QFileDialog dialog(parent, title, QString::fromStdString(folder), filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(defaultSuffix);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    return dialog.selectedFiles().front();
}

} // namespace vel
