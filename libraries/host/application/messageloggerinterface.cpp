#include "messageloggerinterface.h"

#include <QtDebug>

MessageLoggerInterface* MessageLoggerInterface::returnMe()
{
    static MessageLoggerInterface instance;
    return &instance;
}

void MessageLoggerInterface::Error(const QString& text, MessageLoggerInterface* logger)
{
    (logger ? logger : returnMe())->log(LevelError, text);
}

void MessageLoggerInterface::Warning(const QString& text, MessageLoggerInterface* logger)
{
    (logger ? logger : returnMe())->log(LevelWarning, text);
}

void MessageLoggerInterface::Information(const QString& text, MessageLoggerInterface* logger)
{
    (logger ? logger : returnMe())->log(LevelInformation, text);
}

void MessageLoggerInterface::log(Level level, const QString& text)
{
    // Stamped in UTC: local time goes through the C library's time-zone
    // state, which pool threads logging at once would all touch. Readers
    // get local time.
    const QDateTime now = QDateTime::currentDateTimeUtc();
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.append({level, now, text});
    }
    switch (level) {
    case LevelError: qWarning().noquote() << "Error:" << text; break;
    case LevelWarning: qWarning().noquote() << "Warning:" << text; break;
    case LevelInformation: qInfo().noquote() << "Information:" << text; break;
    }
    // Listeners (the host's log window) live on the GUI thread; a message
    // from a pool thread reaches them queued.
    emit messageLogged(int(level), text);
}

QList<MessageLoggerInterface::Entry> MessageLoggerInterface::entries() const
{
    QList<Entry> result;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        result = m_entries;
    }
    for (Entry& e : result)
        e.time = e.time.toLocalTime();
    return result;
}

QStringList MessageLoggerInterface::texts() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QStringList result;
    result.reserve(m_entries.size());
    for (const Entry& e : m_entries)
        result.append(e.text);
    return result;
}

void MessageLoggerInterface::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
}
