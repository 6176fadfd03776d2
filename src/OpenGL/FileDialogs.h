// File dialogs of the application, with the test hook of the application tests: with
// VELLUMBRA_TEST_DIALOG naming a file, a dialog answers that file's first line at once
// instead of showing (an empty answer is a cancel).
#pragma once

#include <QString>

#include <string>

class QWidget;

namespace vel {

// True while the test hook answers the dialogs.
bool DialogsAnsweredByTest();
QString AskOpenFileName(QWidget* parent, QString const& title, std::string const& folder, QString const& filter);
// `defaultSuffix` (without the dot) is added to a name typed without one.
QString AskSaveFileName(QWidget* parent, QString const& title, std::string const& folder, QString const& filter,
                        QString const& defaultSuffix = QString());

} // namespace vel
