#include "kahostmessagelog.h"

#include "messageloggerinterface.h"

#include <QDateTime>
#include <QHeaderView>
#include <QLabel>
#include <QTextDocument>

KAHostMessageLog::KAHostMessageLog(QWidget* parent)
    : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("messageLog"));
    setRootIsDecorated(false);
    setColumnCount(3);
    setHeaderLabels({tr("Level", "Niveau"), tr("Time", "Heure"), tr("Message", "Message")});
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries())
        append(entry.level, entry.time, entry.text);
    // Queued: a message logged on a worker thread reaches the window on its
    // own thread.
    connect(MessageLoggerInterface::returnMe(), &MessageLoggerInterface::messageLogged, this,
            &KAHostMessageLog::slotMessage, Qt::QueuedConnection);
}

void KAHostMessageLog::slotMessage(int level, const QString& text)
{
    append(level, QDateTime::currentDateTime(), text);
}

// Messages are rich text (names in bold, already escaped): shown as the
// user reads them.
void KAHostMessageLog::append(int level, const QDateTime& time, const QString& text)
{
    static const char* const english[] = {"Error", "Warning", "Information"};
    static const char* const french[] = {"Erreur", "Avertissement", "Information"};
    const int index = qBound(0, level, 2);
    auto* item = new QTreeWidgetItem(this);
    item->setText(0, tr(english[index], french[index]));
    item->setText(1, time.toString(QStringLiteral("HH:mm:ss")));
    QTextDocument doc;
    doc.setHtml(text);
    item->setText(2, doc.toPlainText());
    item->setToolTip(2, text);
    scrollToItem(item);
}
