#pragma once

#include "kahost_export.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

#include <mutex>

// The host message log. Messages are kept in memory with their level, time
// and text (the host window and tests read them) and echoed to the Qt log.
// Thread-safe: a pool thread may log.
class KAHOST_EXPORT MessageLoggerInterface : public QObject
{
    Q_OBJECT
public:
    enum Level { LevelError = 0, LevelWarning = 1, LevelInformation = 2 };
    struct Entry {
        Level level;
        QDateTime time; // local time
        QString text;
    };

    static MessageLoggerInterface* returnMe();

    // The second argument names the logger to use; null means the host's.
    static void Error(const QString& text, MessageLoggerInterface* logger = nullptr);
    static void Warning(const QString& text, MessageLoggerInterface* logger = nullptr);
    static void Information(const QString& text, MessageLoggerInterface* logger = nullptr);

    void log(Level level, const QString& text);
    QList<Entry> entries() const;
    QStringList texts() const;
    void clear();

signals:
    void messageLogged(int level, const QString& text);

private:
    MessageLoggerInterface() = default;
    // A standard mutex rather than QMutex: its contended path lives in the
    // C library, where the thread sanitizer sees it.
    mutable std::mutex m_mutex;
    QList<Entry> m_entries; // guarded by m_mutex
};
