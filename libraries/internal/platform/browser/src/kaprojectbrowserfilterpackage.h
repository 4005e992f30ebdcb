#pragma once

#include "kabrowser_export.h"
#include "kaobjecttype.h"

#include <QCoreApplication>
#include <QList>

struct KAProjectBrowserFilter;

// Says what a project browser shows and may do: an ordered list of entries
// keyed by kind, the kind the view is rooted at, and the read-only switch.
class KABROWSER_EXPORT KAProjectBrowserFilterPackage
{
    Q_DECLARE_TR_FUNCTIONS(KAProjectBrowserFilterPackage)
public:
    KAProjectBrowserFilterPackage();
    KAProjectBrowserFilterPackage(const KAProjectBrowserFilterPackage& other);
    KAProjectBrowserFilterPackage& operator=(const KAProjectBrowserFilterPackage& other);
    virtual ~KAProjectBrowserFilterPackage();

    // Appends an entry for one of the fourteen known kinds unless present;
    // any other kind is ignored.
    virtual void add(KAObjectType type);
    void remove(KAObjectType type);
    const KAProjectBrowserFilter* contains(KAObjectType type) const;
    QList<const KAProjectBrowserFilter*> list() const;

    KAObjectType currentUserFilter() const { return m_currentUserFilter; }
    void setCurrentUserFilter(KAObjectType type) { m_currentUserFilter = type; }

    bool readOnly() const { return m_readOnly; }
    // There is no way back: read-only also withdraws the editing switches.
    void setReadOnly();


protected:
    // Appends a silent entry (no label, no icon); for derived packages.
    void appendSilent(KAObjectType type);

private:
    void appendKnown(KAObjectType type);
    void copyEntries(const KAProjectBrowserFilterPackage& other);
    void deleteEntries();

    QList<KAProjectBrowserFilter*> m_filters; // owned
    KAObjectType m_currentUserFilter = KAObjectTypeProject;
    bool m_readOnly = false;
};
