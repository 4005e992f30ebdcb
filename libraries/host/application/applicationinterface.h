#pragma once

#include "kahost_export.h"

#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

class KAAliasFolderMgr;
class KAObject2;

// The host application: settings kept in an XML file in the application-data
// folder, and the notifications that objects changed.
class KAHOST_EXPORT ApplicationInterface : public QObject
{
    Q_OBJECT
public:
    static ApplicationInterface* returnMe();

    QString settingsPath() const;
    QVariant setting(const QString& key, const QVariant& defaultValue = QVariant()) const;
    bool setSetting(const QString& key, const QVariant& value); // written through
    QString language() const;                                   // "en" or "fr"
    // Forgets the values read so far and reads the file again (another
    // instance of the application changed it).
    void reloadSettings();

    // The user's alias folders.
    KAAliasFolderMgr* aliasFolderMgr();

    // An object changed: views showing it refresh.
    void objectChanged(const KAObject2* object);

signals:
    void refreshObject(const KAObject2* object);
    void refreshOtherThanData(int kind);

private:
    ApplicationInterface();
    ~ApplicationInterface() override;
    void loadSettings();
    QMap<QString, QString> m_settings;
    bool m_loaded = false;
    KAAliasFolderMgr* m_aliasFolderMgr = nullptr; // owned, made on first use
};
