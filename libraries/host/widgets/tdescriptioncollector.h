#pragma once

#include "kahost_export.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class KAObject2;

// Feeds the property panes: builds the HTML description of the object the
// user picked and hands it to every registered editor that has a
// setHtml(QString) slot or invokable method (a QTextEdit has one), and to
// the descriptionChanged() signal. GUI thread only.
class KAHOST_EXPORT TDescriptionCollector : public QObject
{
    Q_OBJECT
public:
    static TDescriptionCollector* getInstance();

    // Not owned; an editor that is destroyed leaves the list by itself.
    void registerEditor(QObject* editor);
    void unregisterEditor(QObject* editor);
    int editorCount() const;

    // Describes object (null clears the panes) and remembers it.
    void displayProperties(const KAObject2* object);
    // The object last described; not owned, only as valid as the caller's.
    const KAObject2* lastObject() const { return m_lastObject; }

    // The description text: kind, name and database folder, names escaped.
    static QString describe(const KAObject2* object);
    // The user-facing name of an object's kind.
    static QString kindName(const KAObject2* object);

signals:
    void descriptionChanged(const QString& html);

private:
    TDescriptionCollector() = default;

    QList<QPointer<QObject>> m_editors; // not owned
    const KAObject2* m_lastObject = nullptr; // not owned
};
