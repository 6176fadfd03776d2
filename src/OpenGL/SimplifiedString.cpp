#include "OpenGL/SimplifiedString.h"

#include <QStringList>

#include <algorithm>

namespace vel {

int RemoveSection(QString& text, QString const& start, QString const& end, int from)
{
    int begin = text.indexOf(start, from);
    if (begin < 0)
        return -1;
    int stop = text.indexOf(end, begin + start.size());
    if (stop < 0)
        text.truncate(begin);
    else
        text.remove(begin, stop + end.size() - begin);
    return begin;
}

void RemoveSections(QString& text, QString const& start, QString const& end)
{
    // Text ahead of a removed section holds no start marker, but the removal may join a
    // marker across the seam: resume just before it.
    int from = 0;
    while ((from = RemoveSection(text, start, end, from)) >= 0)
        from = std::max(0, from - int(start.size()) + 1);
}

std::string SimplifiedString(std::string const& source)
{
    // A line feed becomes two, so that a line comment, which is removed together with its
    // end marker, still leaves a line break behind.
    QString text;
    text.reserve(int(source.size() * 2));
    for (QChar c : QString::fromStdString(source)) {
        if (c == QLatin1Char('\r'))
            text += QLatin1Char('\n');
        else if (c == QLatin1Char('\n'))
            text += QLatin1String("\n\n");
        else
            text += c;
    }
    RemoveSections(text, QStringLiteral("//"), QStringLiteral("\n"));
    RemoveSections(text, QStringLiteral("/*"), QStringLiteral("*/"));

    std::string result;
    result.reserve(source.size());
    for (QString const& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QString simple = line.simplified();
        if (simple.isEmpty() || simple == QLatin1String(" "))
            continue;
        result += simple.toStdString();
        result += '\n';
    }
    return result;
}

} // namespace vel
