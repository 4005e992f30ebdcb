#include "tdatabasebatch.h"

#include "kaobject2.h"
#include "tdatabaseindex.h"
#include "tdatabaseschema.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QVariant>

#include <algorithm>

namespace TechDB {

TDatabaseBatch::TDatabaseBatch(const QSqlDatabase& connection, qint64 lastKnownId)
    : m_path(connection.databaseName())
    , m_insertObject(connection)
    , m_insertLink(connection)
    , m_insertProperty(connection)
    , m_insertCompoundRef(connection)
    , m_connection(connection)
    , m_hasCompoundTable(TDatabaseSchema::hasCompoundTable(connection))
    , m_firstId(lastKnownId + 1)
{
    QSqlQuery sequence(connection);
    sequence.setForwardOnly(true);
    if (sequence.exec(QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = 'objects'")) && sequence.next())
        m_firstId = qMax(m_firstId, sequence.value(0).toLongLong() + 1);
}

bool TDatabaseBatch::prepare(QString* error)
{
    const bool ok = m_insertObject.prepare(QStringLiteral(
                        "INSERT INTO objects (id, parent, kind, name, source, multichannel) VALUES (?, ?, ?, ?, ?, ?)"))
        && m_insertLink.prepare(QStringLiteral("INSERT OR IGNORE INTO links (identification, peakdetect) VALUES (?, ?)"))
        && m_insertProperty.prepare(QStringLiteral(
            "INSERT OR REPLACE INTO properties (object, key, value, unit, comment) VALUES (?, ?, ?, ?, ?)"))
        && (!m_hasCompoundTable
            || m_insertCompoundRef.prepare(TDatabaseSchema::insertCompoundEntry()));
    if (!ok && error)
        *error = TDatabaseSchema::queryError(m_insertObject.lastError().isValid() ? m_insertObject
                                             : m_insertLink.lastError().isValid() ? m_insertLink
                                             : m_insertProperty.lastError().isValid() ? m_insertProperty
                                                                                      : m_insertCompoundRef,
                                             m_path);
    return ok;
}

bool TDatabaseBatch::exec(QSqlQuery& query, QString* error)
{
    if (query.exec())
        return true;
    if (error)
        *error = TDatabaseSchema::queryError(query, m_path);
    return false;
}

qint32 TDatabaseBatch::kindOf(const TDatabaseIndex& index, qint64 id) const
{
    if (id >= m_firstId && id < m_firstId + m_objects.size())
        return m_objects.at(int(id - m_firstId)).kind;
    const KAObject2* object = index.object(id);
    return object ? qint32(object->type()) : 0;
}

qint64 TDatabaseBatch::addObject(const TDatabaseIndex& index, qint32 kind, qint64 parentId, const QString& name,
                                 int source, bool multichannel, QString* error)
{
    if (parentId != 0 && kindOf(index, parentId) == 0) {
        if (error)
            *error = TDatabaseSchema::tr("The parent object %1 does not exist.",
                                         "L'objet parent %1 n'existe pas.").arg(parentId);
        return 0;
    }
    kind = TDatabaseIndex::normalizedKind(kind);
    const qint64 id = m_firstId + m_objects.size();
    m_insertObject.bindValue(0, id);
    m_insertObject.bindValue(1, parentId);
    m_insertObject.bindValue(2, kind);
    m_insertObject.bindValue(3, TDatabaseSchema::text(name));
    m_insertObject.bindValue(4, source);
    m_insertObject.bindValue(5, multichannel ? 1 : 0);
    if (!exec(m_insertObject, error))
        return 0;
    m_objects.append({id, parentId, kind, name, source, multichannel});
    return id;
}

bool TDatabaseBatch::addLink(const TDatabaseIndex& index, qint64 identificationId, qint64 peakDetectId,
                             QString* error)
{
    if (kindOf(index, identificationId) != KAObjectTypeIdentification
        || kindOf(index, peakDetectId) != KAObjectTypePeakDetect) {
        if (error)
            *error = TDatabaseSchema::tr("A link must join an identification to a peak detection (%1, %2).",
                                         "Un lien doit relier une identification à une détection de pics (%1, %2).")
                         .arg(identificationId)
                         .arg(peakDetectId);
        return false;
    }
    m_insertLink.bindValue(0, identificationId);
    m_insertLink.bindValue(1, peakDetectId);
    if (!exec(m_insertLink, error))
        return false;
    if (m_insertLink.numRowsAffected() > 0)
        m_links.append({identificationId, peakDetectId});
    return true;
}

bool TDatabaseBatch::addProperty(const TDatabaseIndex& index, qint64 objectId, const TProperty& property,
                                 QString* error)
{
    if (kindOf(index, objectId) == 0 || property.key().isEmpty()) {
        if (error)
            *error = TDatabaseSchema::tr("A property needs a key and an existing object (%1).",
                                         "Une propriété demande une clé et un objet existant (%1).")
                         .arg(objectId);
        return false;
    }
    m_insertProperty.bindValue(0, objectId);
    m_insertProperty.bindValue(1, property.key());
    m_insertProperty.bindValue(2, TDatabaseSchema::text(property.value()));
    m_insertProperty.bindValue(3, TDatabaseSchema::text(property.unit()));
    m_insertProperty.bindValue(4, TDatabaseSchema::text(property.comment()));
    if (!exec(m_insertProperty, error))
        return false;
    m_properties.append({objectId, property});
    return true;
}

bool TDatabaseBatch::addCompoundRef(const TDatabaseIndex& index, qint64 compoundId, const QString& project,
                                    qint64 peakDetectId, QString* error)
{
    // A file of the first format takes the compound table with its first
    // entry, in this batch's transaction.
    if (!m_hasCompoundTable) {
        QSqlError sqlError;
        if (!TDatabaseSchema::ensureCompoundTable(m_connection, &sqlError)) {
            if (error)
                *error = TDatabaseSchema::unreadable(m_path, sqlError.text());
            return false;
        }
        if (!m_insertCompoundRef.prepare(TDatabaseSchema::insertCompoundEntry())) {
            if (error)
                *error = TDatabaseSchema::queryError(m_insertCompoundRef, m_path);
            return false;
        }
        m_hasCompoundTable = true;
    }
    if (kindOf(index, compoundId) != KAObjectTypeCompound || peakDetectId <= 0
        || (project.isEmpty() && kindOf(index, peakDetectId) != KAObjectTypePeakDetect)) {
        if (error)
            *error = TDatabaseSchema::tr("A compound entry must join a compound to a peak detection (%1, %2).",
                                         "Une entrée de composé doit relier un composé à une détection de pics (%1, %2).")
                         .arg(compoundId)
                         .arg(peakDetectId);
        return false;
    }
    auto next = m_nextPosition.find(compoundId);
    if (next == m_nextPosition.end())
        next = m_nextPosition.insert(compoundId, index.nextCompoundPosition(compoundId));
    TCompoundRef ref;
    ref.position = next.value();
    ref.project = project;
    ref.peakDetect = peakDetectId;
    m_insertCompoundRef.bindValue(0, compoundId);
    m_insertCompoundRef.bindValue(1, ref.position);
    m_insertCompoundRef.bindValue(2, TDatabaseSchema::text(project));
    m_insertCompoundRef.bindValue(3, peakDetectId);
    if (!exec(m_insertCompoundRef, error))
        return false;
    ++next.value();
    m_compoundRefs.append({compoundId, ref});
    return true;
}

bool TDatabaseBatch::touchesCompounds() const
{
    if (!m_compoundRefs.isEmpty())
        return true;
    return std::any_of(m_objects.cbegin(), m_objects.cend(), [](const ObjectRow& row) {
        return row.kind == KAObjectTypeCompound || row.kind == KAObjectTypeCompoundList;
    });
}

void TDatabaseBatch::finish()
{
    m_insertObject.finish();
    m_insertLink.finish();
    m_insertProperty.finish();
    m_insertCompoundRef.finish();
}

void TDatabaseBatch::fileInto(TDatabaseIndex* index) const
{
    index->reserve(index->count() + m_objects.size());
    for (const ObjectRow& row : m_objects)
        index->insertObject(row.id, row.parent, row.kind, row.name, row.source, row.multichannel);
    index->fileKinds();
    for (const PropertyRow& row : m_properties)
        index->setProperty(row.object, row.property);
    for (const LinkRow& row : m_links)
        index->insertLink(row.identification, row.peakDetect);
    for (const CompoundRow& row : m_compoundRefs)
        index->appendCompoundRef(row.compound, row.ref);
}

} // namespace TechDB
