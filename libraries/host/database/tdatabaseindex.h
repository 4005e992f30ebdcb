#pragma once

#include "kaobjecttype.h"
#include "tcompoundref.h"
#include "tobjectarena.h"
#include "tproperty.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QSet>
#include <QString>
#include <QVector>

class KAObject2;
class KAObject2Analysis;
class KAObject2Identification;
class KAObject2IdentificationGroup;
class KAObject2PeakDetect;

namespace TechDB {

class TDatabase;

// The in-memory side of a project database: every object, owned here, and
// the indexes that answer the database's lookups without walking the
// objects. Filled row by row (at open and when a batch commits); changed only
// after the matching SQL transaction committed.
class TDatabaseIndex
{
public:
    explicit TDatabaseIndex(TDatabase* db);
    ~TDatabaseIndex();
    TDatabaseIndex(const TDatabaseIndex&) = delete;
    TDatabaseIndex& operator=(const TDatabaseIndex&) = delete;

    // Kind 282 is also read as an identification: identifications report
    // KAObjectTypeIdentification, and are filed under that kind.
    static qint32 normalizedKind(qint32 kind);

    void reserve(int objects);
    // Makes the object of the right class for its kind and files it. The
    // parent may come later: the child is attached when it arrives. The
    // lists by kind follow only with fileKinds(), once the rows are in.
    KAObject2* insertObject(qint64 id, qint64 parentId, qint32 kind, const QString& name, int source,
                            bool multichannel);
    // Identification -> peak detection. False when either end is missing or
    // of the wrong kind.
    bool insertLink(qint64 identificationId, qint64 peakDetectId);
    void fileKinds();
    void setProperty(qint64 objectId, const TProperty& property);

    int count() const { return m_objects.size(); }
    qint64 maxId() const { return m_objects.isEmpty() ? 0 : m_maxId; }
    KAObject2* object(qint64 id) const;
    bool contains(const KAObject2* object) const;
    QList<const KAObject2*> objectsOfType(qint32 kind) const { return m_byType.value(kind); }
    QList<KAObjectType> types() const;
    const KAObject2Analysis* analysis(const QString& name) const { return m_analysisByName.value(name); }
    const KAObject2IdentificationGroup* groupOf(const KAObject2PeakDetect* peakDetect) const;
    TProperty property(qint64 objectId, const QString& key, bool* found) const;
    QList<const KAObject2*> visualChildren(qint32 kind, const KAObject2* parent) const;

    // A compound's references to peak detections, in position order.
    QVector<TCompoundRef> compoundRefs(qint64 compoundId) const { return m_compoundRefs.value(compoundId); }
    // Where the next entry of a compound goes: after its last one.
    qint64 nextCompoundPosition(qint64 compoundId) const;
    void appendCompoundRef(qint64 compoundId, const TCompoundRef& ref);
    void removeCompoundRef(qint64 compoundId, qint64 position);

    void rename(KAObject2* object, const QString& name);
    // The object and all its descendants, parents before children.
    QList<const KAObject2*> subtree(const KAObject2* root) const;
    // Removes the objects from every index and from their parents, then
    // frees them. The list must be closed under children (see subtree).
    void remove(const QList<const KAObject2*>& objects);

private:
    using VisualKey = QPair<qint32, QString>; // parent kind, parent name
    // True when the properties hold "parent"; *complete when "parentID" too.
    static bool visualKey(const QVector<TProperty>& properties, VisualKey* key, bool* complete);
    KAObject2* makeObject(qint32 kind, const QString& name, int source, bool multichannel);
    void attach(KAObject2* child, KAObject2* parent);
    void addVisual(const KAObject2* object, const VisualKey& key);
    void removeVisual(const KAObject2* object);
    void refileAnalysisName(const QString& name);

    TDatabase* m_db = nullptr;                          // not owned
    TObjectArena m_arena;                               // the objects' memory
    // Owned (built in m_arena): every object, sorted by id, which is the
    // database order; looked up by id with a binary search.
    QVector<KAObject2*> m_objects;
    KAObject2* m_lastParent = nullptr;                  // not owned: rows of one parent come together
    QHash<qint32, QList<const KAObject2*>> m_byType;    // not owned, database order
    qint64 m_maxId = 0;
    QHash<qint64, QVector<KAObject2*>> m_waitingForParent; // parent id -> children seen before it; not owned
    // First analysis of each name, in database order.
    QHash<QString, KAObject2Analysis*> m_analysisByName;   // not owned
    // Identifications that work on each peak detection (the group is theirs).
    QHash<const KAObject2PeakDetect*, QVector<KAObject2Identification*>> m_identificationsOf; // not owned
    QHash<qint64, QVector<TProperty>> m_properties;
    // Objects with a "parent" property leave their structural parent's
    // visual children; with "parentID" too they join the children of the
    // object they name: filed here by that parent, in database order.
    QHash<VisualKey, QList<const KAObject2*>> m_visualByParent; // not owned
    QHash<const KAObject2*, VisualKey> m_visualKeyOf;            // not owned
    QHash<qint64, QVector<TCompoundRef>> m_compoundRefs;         // compound id -> its detections
};

} // namespace TechDB
