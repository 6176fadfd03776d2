#include "Core/Communicate.h"

namespace vel {

void Communicate::message(QString const& text, int type)
{
    if (quiet) {
        quiet = false;
        return;
    }
    emit LogInfo(text, type);
}

QString Communicate::LogPrefix(int type)
{
    switch (type) {
    case 1:
        return QStringLiteral("[w] ");
    case 2:
        return QStringLiteral("[e] ");
    default:
        return QStringLiteral(" i  ");
    }
}

QString Communicate::PrependLogEntry(QString const& log, QString const& text, int type)
{
    return LogPrefix(type) + text + QLatin1Char('\n') + log;
}

void LogInfo(QString const& text, int type)
{
    Communicate::instance().message(text, type);
}

} // namespace vel
