#include "mainwindow/AssetManager.h"

#include "mainwindow/ConfigFile.h"

#include <QDirIterator>
#include <QMutexLocker>
#include <QtConcurrent/QtConcurrentRun>

namespace vel {

namespace {
// A scan stops after this many files, so a folder like "/" cannot hold up the program.
constexpr int SCAN_FILES_MAX = 10000;
} // namespace

AssetManager::AssetManager()
{
    for (std::string const& folder : ASSET_FOLDERS)
        folders.push_back(QString::fromStdString(folder));
    std::vector<QString> all = folders;
    running = QtConcurrent::run([this, all] {
        for (QString const& folder : all)
            scan(folder);
    });
}

AssetManager::~AssetManager()
{
    wait();
}

void AssetManager::wait()
{
    running.waitForFinished();
}

void AssetManager::append(QString const& folder, bool scanNow)
{
    {
        QMutexLocker locker(&mutex);
        if (std::find(folders.begin(), folders.end(), folder) != folders.end())
            return;
        folders.push_back(folder);
    }
    if (scanNow) {
        running.waitForFinished();
        running = QtConcurrent::run([this, folder] { scan(folder); });
    }
}

void AssetManager::save()
{
    QMutexLocker locker(&mutex);
    ASSET_FOLDERS.clear();
    for (QString const& folder : folders)
        ASSET_FOLDERS.push_back(folder.toStdString());
}

std::vector<QFileInfo> AssetManager::assets()
{
    QMutexLocker locker(&mutex);
    return found;
}

QString AssetManager::thumb_path(QFileInfo const& file)
{
    return file.absolutePath() + QLatin1Char('/') + file.completeBaseName() + QStringLiteral("_thumb.jpg");
}

void AssetManager::scan(QString const& folder)
{
    QStringList const filters = {"*.vsc", "*.vob", "*.obj", "*.png", "*.jpg", "*.hdr"};
    QDirIterator it(folder, filters, QDir::Files, QDirIterator::Subdirectories);
    std::vector<QFileInfo> files;
    while (it.hasNext() && int(files.size()) < SCAN_FILES_MAX) {
        it.next();
        if (!it.fileName().endsWith(QLatin1String("_thumb.jpg")))
            files.push_back(it.fileInfo());
    }
    QMutexLocker locker(&mutex);
    found.insert(found.end(), files.begin(), files.end());
}

} // namespace vel
