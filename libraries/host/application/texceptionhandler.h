#pragma once

#include "kahost_export.h"

#include <QEvent>
#include <QObject>
#include <QString>

// A failure reported by a worker thread, posted to the exception handler.
class KAHOST_EXPORT TExceptionOccuredEvent : public QEvent
{
public:
    static QEvent::Type eventType();
    TExceptionOccuredEvent(const QString& message, int line, const QString& file, const QString& reportPath)
        : QEvent(eventType()), m_message(message), m_line(line), m_file(file), m_reportPath(reportPath) {}
    const QString& message() const { return m_message; }
    int line() const { return m_line; }
    const QString& file() const { return m_file; }
    const QString& reportPath() const { return m_reportPath; }

private:
    QString m_message;
    int m_line;
    QString m_file;
    QString m_reportPath;
};

// Receives the failures of worker threads on the GUI thread and logs them.
// Workers write a report file (the portable stand-in for a crash dump) in
// the application-data folder with writeReport() first.
class KAHOST_EXPORT TExceptionHandler : public QObject
{
    Q_OBJECT
public:
    static TExceptionHandler* getInstance();
    // Writes a report of the failure; returns its path (empty on failure).
    // Thread-safe.
    static QString writeReport(const QString& message, const QString& file, int line);
    // Posts the failure to the handler (any thread).
    static void report(const QString& message, const QString& file, int line);

    bool event(QEvent* event) override;

private:
    TExceptionHandler() = default;
};
