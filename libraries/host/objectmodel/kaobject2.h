#pragma once

#include "kahost_export.h"
#include "kaobjecttype.h"

#include <QList>
#include <QString>
#include <QVector>

namespace TechDB { class TDatabase; }

// Base of every object a browser shows. Objects loaded from a project
// database belong to it (stable addresses while the project is open);
// objects made by a browser belong to the tree node or manager that made
// them.
class KAHOST_EXPORT KAObject2
{
public:
    explicit KAObject2(KAObjectType type, const QString& name = QString());
    KAObject2(const KAObject2& other);
    KAObject2& operator=(const KAObject2& other);
    virtual ~KAObject2();

    virtual KAObjectType type() const;
    const QString& name() const { return m_name; }
    // The name folded to case once, for case-insensitive matching.
    const QString& foldedName() const { return m_foldedName; }
    void setName(const QString& name);

    // The key a tree item sorts the object by, kept by the first item made
    // for the next ones; null until then, and again after a renaming. GUI
    // thread only: the search workers never read it.
    const QString& itemSortKey() const { return m_itemSortKey; }
    void keepItemSortKey(const QString& key) const { m_itemSortKey = key; }

    TechDB::TDatabase* db() const { return m_db; }
    void dbChange(TechDB::TDatabase* db) { m_db = db; }

    // Database row of the object; 0 for objects made by a browser.
    qint64 id() const { return m_id; }
    void setId(qint64 id) { m_id = id; }

    // Structural parent in the database (the analysis of a signal, ...).
    const KAObject2* parentObject() const { return m_parent; }
    const QVector<KAObject2*>& children() const { return m_children; }
    void setParentObject(KAObject2* parent); // appends this to parent's children
    void detachFromParent();                 // removes this from parent's children

    void addAllowedVisualReparentType(KAObjectType type);
    QList<KAObjectType> getAllowedVisualReparentType() const { return m_allowedTypes; }

    virtual bool isReadOnly() const { return false; }
    virtual KAObject2* clone() const;

private:
    KAObjectType m_type;
    QString m_name;
    QString m_foldedName;
    mutable QString m_itemSortKey; // not copied: a copy makes its own
    TechDB::TDatabase* m_db = nullptr; // not owned
    qint64 m_id = 0;
    KAObject2* m_parent = nullptr;     // not owned
    QVector<KAObject2*> m_children;    // not owned
    QList<KAObjectType> m_allowedTypes;
};
