// AssetManager: the user's asset folders (ASSET_FOLDERS of the configuration) and what a
// background scan found in them: scenes, objects and images, each with its thumbnail path.
#pragma once

#include "Memory/Singleton.h"

#include <QFileInfo>
#include <QFuture>
#include <QMutex>
#include <QString>

#include <vector>

namespace vel {

class AssetManager : public Singleton<AssetManager> {
    friend class Singleton<AssetManager>;

public:
    // Adds a folder (once); with `scan` its files are looked for at once, on a worker.
    void append(QString const& folder, bool scan);
    // The folders go back into ASSET_FOLDERS, for the configuration to write.
    void save();
    // The files found so far, copied under the lock.
    std::vector<QFileInfo> assets();
    // Where the thumbnail of `file` lives: beside it, "<name>_thumb.jpg".
    static QString thumb_path(QFileInfo const& file);
    // Waits for the running scan (at close).
    void wait();

private:
    AssetManager();
    ~AssetManager() override;
    void scan(QString const& folder);

    QMutex mutex;
    std::vector<QString> folders;
    std::vector<QFileInfo> found;
    QFuture<void> running;
};

} // namespace vel
