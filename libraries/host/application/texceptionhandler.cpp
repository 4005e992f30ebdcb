#include "texceptionhandler.h"

#include "messageloggerinterface.h"
#include "tapplicationdata.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QThread>
#include <atomic>

QEvent::Type TExceptionOccuredEvent::eventType()
{
    static const QEvent::Type type = QEvent::Type(QEvent::registerEventType());
    return type;
}

TExceptionHandler* TExceptionHandler::getInstance()
{
    static TExceptionHandler* instance = [] {
        auto* handler = new TExceptionHandler;
        if (QCoreApplication::instance())
            handler->moveToThread(QCoreApplication::instance()->thread());
        return handler;
    }();
    return instance;
}

QString TExceptionHandler::writeReport(const QString& message, const QString& file, int line)
{
    static std::atomic<int> counter{0};
    const QString dir = QDir(TApplicationData::getInstance()->applicationDataPath()).filePath(QStringLiteral("reports"));
    QDir().mkpath(dir);
    const QString path = QDir(dir).filePath(QStringLiteral("report-%1-%2.txt")
                                                .arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")))
                                                .arg(++counter));
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Text))
        return QString();
    const QByteArray text = QStringLiteral("time: %1\nthread: %2\nfile: %3\nline: %4\nmessage: %5\n")
                                .arg(QDateTime::currentDateTime().toString(Qt::ISODate))
                                .arg(quintptr(QThread::currentThreadId()))
                                .arg(file)
                                .arg(line)
                                .arg(message)
                                .toUtf8();
    out.write(text);
    return out.error() == QFile::NoError ? path : QString();
}

void TExceptionHandler::report(const QString& message, const QString& file, int line)
{
    const QString path = writeReport(message, file, line);
    QCoreApplication::postEvent(getInstance(), new TExceptionOccuredEvent(message, line, file, path));
}

bool TExceptionHandler::event(QEvent* event)
{
    if (event->type() != TExceptionOccuredEvent::eventType())
        return QObject::event(event);
    const auto* failure = static_cast<TExceptionOccuredEvent*>(event);
    MessageLoggerInterface::Error(
        tr("%1 (%2, line %3); report written to %4", "%1 (%2, ligne %3) ; rapport écrit dans %4")
            .arg(failure->message().toHtmlEscaped(), failure->file().toHtmlEscaped())
            .arg(failure->line())
            .arg(failure->reportPath().toHtmlEscaped()));
    return true;
}
