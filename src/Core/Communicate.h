// Communicate: the signal hub through which every subsystem reaches the shell without
// knowing it, and through which worker threads reach the main thread.
//
// Logging, and the signals by which the undo history keeps its list in the interface.
// Log levels: 0 information, 1 warning, 2 error.
// `quiet` swallows the next message only, so a caller can silence one rebuild at a time.
#pragma once

#include "Memory/Singleton.h"

#include <QObject>
#include <QString>

namespace vel {

class Communicate : public QObject, public Singleton<Communicate> {
    Q_OBJECT
public:
    bool quiet = false; // one-shot: the next message is swallowed and the flag cleared

    // The single entry for user-level messages: honours `quiet`, else emits LogInfo.
    void message(QString const& text, int type);

    // " i  ", "[w] " or "[e] ": the prefix a log line of that level starts with.
    static QString LogPrefix(int type);

    // The log text after `text` of level `type` arrives: the newest entry stands first.
    static QString PrependLogEntry(QString const& log, QString const& text, int type);

signals:
    void LogInfo(QString const& text, int type);

    // History: the newest entry was destroyed; the oldest left for the budget; an entry
    // was added; a group changed; the interface should drop its last entry.
    void historyPop();
    void historyPopFront();
    void historyUpdate();
    void historyGroup(int index);
    void UndoPop();
};

// Shorthand for Communicate::instance().message(text, type).
void LogInfo(QString const& text, int type);

} // namespace vel
