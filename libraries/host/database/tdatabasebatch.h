#pragma once

#include "tcompoundref.h"
#include "tproperty.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVector>


namespace TechDB {

class TDatabaseIndex;

// One open write batch: prepared statements bound row by row inside the
// caller's transaction, and the rows kept aside until the transaction
// commits, when they are filed into memory.
class TDatabaseBatch
{
public:
    // lastKnownId: the highest id in memory; ids of deleted objects are not
    // given again either (SQLite's sequence remembers them).
    TDatabaseBatch(const QSqlDatabase& connection, qint64 lastKnownId);
    bool prepare(QString* error);

    // 0 with *error on failure. The parent must be known to the index or
    // added earlier in this batch.
    qint64 addObject(const TDatabaseIndex& index, qint32 kind, qint64 parentId, const QString& name, int source,
                     bool multichannel, QString* error);
    bool addLink(const TDatabaseIndex& index, qint64 identificationId, qint64 peakDetectId, QString* error);
    bool addProperty(const TDatabaseIndex& index, qint64 objectId, const TProperty& property, QString* error);
    // Appends a peak detection to a compound's list; project is the
    // detection's project folder relative to this one (empty: this project,
    // where the detection must exist).
    bool addCompoundRef(const TDatabaseIndex& index, qint64 compoundId, const QString& project, qint64 peakDetectId,
                        QString* error);

    // Releases the statements; call before the transaction ends.
    void finish();
    // Files the kept rows into memory; call once the transaction committed.
    void fileInto(TDatabaseIndex* index) const;
    int objectCount() const { return m_objects.size(); }
    // True when the batch adds compounds, compound lists or their entries.
    bool touchesCompounds() const;

private:
    struct ObjectRow {
        qint64 id;
        qint64 parent;
        qint32 kind;
        QString name;
        int source;
        bool multichannel;
    };
    struct LinkRow {
        qint64 identification;
        qint64 peakDetect;
    };
    struct CompoundRow {
        qint64 compound;
        TCompoundRef ref;
    };
    struct PropertyRow {
        qint64 object;
        TProperty property;
    };
    // The kind of an object known to the index or to this batch; 0 if none.
    qint32 kindOf(const TDatabaseIndex& index, qint64 id) const;
    bool exec(QSqlQuery& query, QString* error);

    QString m_path;
    QSqlQuery m_insertObject;
    QSqlQuery m_insertLink;
    QSqlQuery m_insertProperty;
    QSqlQuery m_insertCompoundRef; // prepared once the file has the compound table
    QSqlDatabase m_connection;
    // False for a file of the first format until its first compound entry.
    bool m_hasCompoundTable = false;
    qint64 m_firstId = 1;
    QVector<ObjectRow> m_objects; // ids m_firstId, m_firstId + 1, ...
    QVector<LinkRow> m_links;
    QVector<PropertyRow> m_properties;
    QVector<CompoundRow> m_compoundRefs;
    QHash<qint64, qint64> m_nextPosition; // compound id -> next free position
};

} // namespace TechDB
