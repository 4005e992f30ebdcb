#pragma once

#include "kahost_export.h"

#include <QList>
#include <QString>

class KAAliasFolderInterface;
class KAAliasFolderMgrObserver;

// The user's alias folders, kept in "aliasfolders.xml" in the
// application-data folder. GUI thread only.
class KAHOST_EXPORT KAAliasFolderMgr
{
public:
    KAAliasFolderMgr();
    ~KAAliasFolderMgr();

    QList<const KAAliasFolderInterface*> aliasList() const;
    // Names are unique, compared without case; false when taken or empty.
    bool addAlias(const QString& name, const QString& path);
    bool removeAlias(const QString& name);
    const KAAliasFolderInterface* findByName(const QString& name) const;
    // The alias whose folder holds the path (the folder itself or a
    // parent); the deepest one when several do.
    const KAAliasFolderInterface* findByFolder(const QString& path) const;

    void registerObserver(KAAliasFolderMgrObserver* observer);
    void unregisterObserver(KAAliasFolderMgrObserver* observer);

    QString filePath() const;
    void reload();

private:
    bool save() const;
    void notify();

    QList<KAAliasFolderInterface*> m_aliases;     // owned
    QList<KAAliasFolderMgrObserver*> m_observers; // not owned
};
