#include "Core/ReadTextFile.h"

#include <QFile>

namespace vel {

QString ReadTextFile(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    return QString::fromUtf8(file.readAll());
}

} // namespace vel
