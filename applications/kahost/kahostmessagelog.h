#pragma once

#include <QTreeWidget>

// The message log of the host window: level, time and text of every
// message, newest last.
class KAHostMessageLog : public QTreeWidget
{
    Q_OBJECT
public:
    explicit KAHostMessageLog(QWidget* parent = nullptr);

private slots:
    void slotMessage(int level, const QString& text);

private:
    void append(int level, const QDateTime& time, const QString& text);
};
