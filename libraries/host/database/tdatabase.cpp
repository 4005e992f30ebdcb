#include "tdatabase.h"

#include "kaobject2.h"
#include "kaobject2analysis.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "messageloggerinterface.h"
#include "tabstractmapper.h"
#include "tassert.h"
#include "tdatabasebatch.h"
#include "tdatabaseconnections.h"
#include "tdatabaseindex.h"
#include "tdatabaseloader.h"
#include "tdatabaseregistry.h"
#include "tdatabaseschema.h"
#include "tcompoundabstract.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QSet>
#include <QVariant>

#include <algorithm>

namespace TechDB {

namespace {

const char* const SourceFile = "libraries\\host\\database\\tdatabase";

bool execOrFail(QSqlQuery& query, QSqlError* error)
{
    if (query.exec())
        return true;
    if (error)
        *error = query.lastError();
    return false;
}

bool execOrFail(QSqlQuery& query, const QString& sql, QSqlError* error)
{
    if (query.exec(sql))
        return true;
    if (error)
        *error = query.lastError();
    return false;
}

} // namespace

QString TDatabase::databaseFileName()
{
    return QStringLiteral("project.kadb");
}

QString TDatabase::databasePath(const QString& projectFolder)
{
    return QDir(projectFolder).filePath(databaseFileName());
}

QString TDatabase::settingsPath(const QString& projectFolder)
{
    return QDir(projectFolder).filePath(QStringLiteral("Settings"));
}

void TDatabase::setBusyTimeout(int milliseconds)
{
    TDatabaseConnections::setBusyTimeout(milliseconds);
}

int TDatabase::busyTimeout()
{
    return TDatabaseConnections::busyTimeout();
}

bool TDatabase::createProject(const QString& projectFolder, const QString& name, QString* error)
{
    const QString folder = QDir::cleanPath(QFileInfo(projectFolder).absoluteFilePath());
    const QString path = databasePath(folder);
    if (QFileInfo::exists(path)) {
        if (error)
            *error = tr("A project already exists in %1.", "Un projet existe déjà dans %1.")
                         .arg(QDir::toNativeSeparators(folder));
        return false;
    }
    if (!QDir().mkpath(folder) || !QDir().mkpath(settingsPath(folder))) {
        if (error)
            *error = tr("The project folder %1 cannot be created.", "Le dossier du projet %1 ne peut pas être créé.")
                         .arg(QDir::toNativeSeparators(folder));
        return false;
    }
    const QString connectionName = TDatabaseConnections::uniqueName(QStringLiteral("kadb_create_"));
    bool ok = false;
    {
        QSqlDatabase db = TDatabaseConnections::add(connectionName, path, false, error);
        if (db.isValid()) {
            TProjectHeader header;
            header.name = name;
            ok = TDatabaseSchema::create(db, header, error);
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(connectionName);
    if (!ok)
        QFile::remove(path);
    return ok;
}

bool TDatabase::readProjectHeader(const QString& projectFolder, QString* name, QString* description, int* state,
                                  QString* error)
{
    const QString path = databasePath(projectFolder);
    if (!TDatabaseSchema::checkFile(path, error))
        return false;
    TProjectHeader header;
    const bool ok = TDatabaseConnections::withReadConnection(QStringLiteral("kadb_header_"), path, error,
                                                             [&](QSqlDatabase& db) {
        return TDatabaseSchema::checkConnection(db, path, error) && TDatabaseSchema::readHeader(db, &header, error);
    });
    if (!ok)
        return false;
    if (name)
        *name = header.name;
    if (description)
        *description = header.description;
    if (state)
        *state = header.state;
    return true;
}

// The file is checked before SQLite sees it, then validated and loaded
// through a read-only connection; only a file that passed all of that is
// opened for writing. A refused file is therefore never written.
TDatabase* TDatabase::open(KAObject2Project* project, bool readOnly, QString* error)
{
    if (!project) {
        t_assert("project", SourceFile, __LINE__, false);
        if (error)
            *error = tr("No project given.", "Aucun projet indiqué.");
        return nullptr;
    }
    const QString folder = QDir::cleanPath(QFileInfo(project->folder()).absoluteFilePath());
    const QString path = databasePath(folder);
    if (!TDatabaseSchema::checkFile(path, error))
        return nullptr;

    std::unique_ptr<TDatabase> db(new TDatabase(project, folder, readOnly));
    TProjectHeader header;
    const bool loaded = TDatabaseConnections::withReadConnection(db->m_connections->prefix(), path, error,
                                                                 [&](QSqlDatabase& connection) {
        return TDatabaseSchema::checkConnection(connection, path, error)
            && TDatabaseSchema::readHeader(connection, &header, error)
            && TDatabaseLoader::load(connection, db->m_index.get(), error);
    });
    if (!loaded)
        return nullptr;

    if (!readOnly) {
        const QFileInfo file(path);
        if (!file.isWritable() || !QFileInfo(folder).isWritable()) {
            if (error)
                *error = tr("The project database %1 is write-protected: open the project read-only.",
                            "La base de données du projet %1 est protégée en écriture : ouvrez le projet en lecture seule.")
                             .arg(QDir::toNativeSeparators(path));
            return nullptr;
        }
        if (!db->m_connections->connection(error).isValid())
            return nullptr;
        // A pool thread that opened the project rarely writes; its
        // connection is made again if it does.
        const QCoreApplication* app = QCoreApplication::instance();
        if (!app || QThread::currentThread() != app->thread())
            db->m_connections->releaseThisThread();
    }

    db->m_accessMode = ProjectMgrInterface::TProjectAccessModeEnum(header.accessMode);
    db->applyHeader(header);
    db->m_ready = true;
    project->dbChange(db.get());
    TDatabaseRegistry::add(db.get());
    return db.release();
}

TDatabase::TDatabase(KAObject2Project* project, const QString& folder, bool readOnly)
    : m_project(project)
    , m_folder(folder)
    , m_readOnly(readOnly)
    , m_index(new TDatabaseIndex(this))
    , m_connections(new TDatabaseConnections(QStringLiteral("kadb_%1_").arg(quintptr(this), 0, 16),
                                             databasePath(folder), readOnly))
{
}

TDatabase::~TDatabase()
{
    if (m_ready)
        TDatabaseRegistry::remove(this);
    m_batch.reset();
    if (m_project && m_project->db() == this)
        m_project->dbChange(nullptr);
    m_index.reset();
    m_connections.reset();
}

void TDatabase::applyHeader(const TProjectHeader& header)
{
    if (!m_project)
        return;
    // Only what changed is set: the project object is read by the GUI thread
    // while a pool thread may be opening the project.
    if (!header.name.isEmpty() && header.name != m_project->name())
        m_project->setName(header.name);
    if (header.description != m_project->description())
        m_project->setDescription(header.description);
    if (header.state != m_project->projectState())
        m_project->setProjectState(header.state);
}

QString TDatabase::location() const
{
    return m_folder;
}

int TDatabase::objectCount() const
{
    return m_index->count();
}

QList<KAObjectType> TDatabase::objectTypes() const
{
    return m_index->types();
}

QList<const KAObject2*> TDatabase::getObjectLst(const KAObjectType& type) const
{
    return m_index->objectsOfType(type);
}

QList<const KAObject2*> TDatabase::getObjectVisualChildren(KAObjectType type, const KAObject2* parent) const
{
    return m_index->visualChildren(type, parent);
}

const KAObject2Analysis* TDatabase::getAnalysis(const QString& name) const
{
    return m_index->analysis(name);
}

const KAObject2IdentificationGroup* TDatabase::getIdentificationGroup(const KAObject2PeakDetect* peakDetect) const
{
    return peakDetect ? m_index->groupOf(peakDetect) : nullptr;
}

const KAObject2* TDatabase::objectById(qint64 id) const
{
    return m_index->object(id);
}

QList<const KAObject2*> TDatabase::datasetList(const KAObject2Well* well) const
{
    return TAbstractMapper::getObjectChildLst(well, KAObjectTypeDataset);
}

QString TDatabase::peakDetectMSPath(const KAObject2Analysis* analysis)
{
    if (!analysis || !analysis->db())
        return QString();
    return QDir(analysis->db()->location())
        .filePath(QStringLiteral("Analyses/%1.mspd").arg(analysis->id()));
}

QString TDatabase::objectFilePath(const KAObject2* object)
{
    if (!object || !object->db())
        return QString();
    return QDir(object->db()->location()).filePath(QStringLiteral("Data/%1.dat").arg(object->id()));
}

TProperty TDatabase::getObjectProperties(const KAObject2* object, const QString& key, bool* found) const
{
    if (!m_index->contains(object)) {
        if (found)
            *found = false;
        return TProperty();
    }
    return m_index->property(object->id(), key, found);
}

// ---- compounds ------------------------------------------------------------

QList<const TCompoundAbstract*> TDatabase::getAllCompoundinDB(const QList<const KAObject2Project*>& projects)
{
    QList<const TCompoundAbstract*> compounds;
    QSet<const TDatabase*> seen;
    for (const KAObject2Project* project : projects) {
        const TDatabase* db = project ? project->db() : nullptr;
        if (!db || seen.contains(db))
            continue;
        seen.insert(db);
        for (const KAObject2* object : db->getObjectLst(KAObjectTypeCompound))
            compounds.append(static_cast<const TCompoundAbstract*>(object));
    }
    return compounds;
}

TDatabase* TDatabase::openDatabase(const QString& projectFolder)
{
    return TDatabaseRegistry::find(projectFolder);
}

// The empty string stands for this project; another project is named by its
// folder relative to ours, so that a workspace moved as a whole keeps its
// references.
QString TDatabase::relativeProjectPath(const QString& projectFolder) const
{
    if (projectFolder.isEmpty())
        return QString();
    const QString folder = TDatabaseRegistry::key(projectFolder);
    if (folder == m_folder)
        return QString();
    return QDir(m_folder).relativeFilePath(folder);
}

QList<const KAObject2PeakDetect*> TDatabase::compoundPeakDetectList(const TCompoundAbstract* compound) const
{
    QList<const KAObject2PeakDetect*> list;
    if (!m_index->contains(compound))
        return list;
    for (const TCompoundRef& ref : m_index->compoundRefs(compound->id())) {
        const TDatabase* db = ref.project.isEmpty()
            ? this
            : TDatabaseRegistry::find(QDir(m_folder).filePath(ref.project));
        const KAObject2* object = db ? db->objectById(ref.peakDetect) : nullptr;
        list.append(object && object->type() == KAObjectTypePeakDetect
                        ? static_cast<const KAObject2PeakDetect*>(object)
                        : nullptr);
    }
    return list;
}

bool TDatabase::compoundAddPeakDetect(const TCompoundAbstract* compound, const KAObject2PeakDetect* peakDetect)
{
    if (!checkOwned(compound, "compound belongs to this database", __LINE__))
        return false;
    TDatabase* owner = peakDetect ? peakDetect->db() : nullptr;
    if (!owner || !owner->m_index->contains(peakDetect)) {
        t_assert("peakDetect belongs to an open database", SourceFile, __LINE__, false);
        return false;
    }
    TCompoundRef ref;
    ref.position = m_index->nextCompoundPosition(compound->id());
    ref.project = owner == this ? QString() : relativeProjectPath(owner->location());
    ref.peakDetect = peakDetect->id();
    const qint64 id = compound->id();
    const bool ok = write([&](QSqlDatabase& db, QSqlError* error) {
        if (!TDatabaseSchema::ensureCompoundTable(db, error))
            return false;
        QSqlQuery query(db);
        if (!query.prepare(TDatabaseSchema::insertCompoundEntry())) {
            *error = query.lastError();
            return false;
        }
        query.addBindValue(id);
        query.addBindValue(ref.position);
        query.addBindValue(TDatabaseSchema::text(ref.project));
        query.addBindValue(ref.peakDetect);
        return execOrFail(query, error);
    });
    if (!ok)
        return false;
    m_index->appendCompoundRef(id, ref);
    emit compoundsChanged();
    return true;
}

bool TDatabase::compoundRemovePeakDetect(const TCompoundAbstract* compound, const KAObject2PeakDetect* peakDetect)
{
    if (!checkOwned(compound, "compound belongs to this database", __LINE__) || !peakDetect)
        return false;
    const QList<const KAObject2PeakDetect*> resolved = compoundPeakDetectList(compound);
    const QVector<TCompoundRef> refs = m_index->compoundRefs(compound->id());
    QVector<qint64> positions;
    for (int i = 0; i < refs.size(); ++i) {
        if (resolved.at(i) == peakDetect)
            positions.append(refs.at(i).position);
    }
    if (positions.isEmpty())
        return false;
    const qint64 id = compound->id();
    const bool ok = write([&](QSqlDatabase& db, QSqlError* error) {
        QSqlQuery query(db);
        query.prepare(QStringLiteral("DELETE FROM compound_peaks WHERE compound = ? AND position = ?"));
        for (qint64 position : qAsConst(positions)) {
            query.bindValue(0, id);
            query.bindValue(1, position);
            if (!execOrFail(query, error))
                return false;
        }
        return true;
    });
    if (!ok)
        return false;
    for (qint64 position : qAsConst(positions))
        m_index->removeCompoundRef(id, position);
    emit compoundsChanged();
    return true;
}

bool TDatabase::touchesCompounds(const QList<const KAObject2*>& objects)
{
    return std::any_of(objects.cbegin(), objects.cend(), [](const KAObject2* object) {
        const KAObjectType type = object->type();
        return type == KAObjectTypeCompound || type == KAObjectTypeCompoundList || type == KAObjectTypePeakDetect;
    });
}

// ---- writes ---------------------------------------------------------------

void TDatabase::fail(const QString& text)
{
    m_lastError = text;
    MessageLoggerInterface::Error(text);
}

bool TDatabase::refuseReadOnly()
{
    if (!m_readOnly)
        return false;
    fail(tr("The project <b>%1</b> is open read-only: it cannot be modified.",
            "Le projet <b>%1</b> est ouvert en lecture seule : il ne peut pas être modifié.")
             .arg((m_project ? m_project->name() : m_folder).toHtmlEscaped()));
    return true;
}

bool TDatabase::checkOwned(const KAObject2* object, const char* expression, int line) const
{
    if (m_index->contains(object))
        return true;
    t_assert(expression, SourceFile, line, false);
    return false;
}

void TDatabase::reportWriteError(const QSqlError& error)
{
    const QString project = (m_project ? m_project->name() : m_folder).toHtmlEscaped();
    const QString code = error.nativeErrorCode();
    if (code == QLatin1String("5") || code == QLatin1String("6")) { // SQLITE_BUSY, SQLITE_LOCKED
        fail(tr("The project <b>%1</b> is locked by another program; the change was abandoned after waiting %2 ms.",
                "Le projet <b>%1</b> est verrouillé par un autre programme ; la modification a été abandonnée "
                "après %2 ms d'attente.")
                 .arg(project)
                 .arg(busyTimeout()));
        return;
    }
    QString text = error.databaseText();
    if (text.isEmpty())
        text = error.text();
    fail(tr("The project <b>%1</b> could not be modified: %2", "Le projet <b>%1</b> n'a pas pu être modifié : %2")
             .arg(project, text.toHtmlEscaped()));
}

bool TDatabase::startTransaction(QSqlDatabase* db)
{
    if (refuseReadOnly())
        return false;
    if (m_batch) {
        t_assert("!m_batch", SourceFile, __LINE__, false);
        return false;
    }
    QString openError;
    *db = m_connections->connection(&openError);
    if (!db->isValid()) {
        fail(openError);
        return false;
    }
    QSqlQuery query(*db);
    // The timeout may have changed since the connection was opened.
    query.exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(busyTimeout()));
    // IMMEDIATE takes the write lock at once, waiting for another writer at
    // most the busy timeout, instead of failing midway through the changes.
    QSqlError error;
    if (execOrFail(query, QStringLiteral("BEGIN IMMEDIATE"), &error))
        return true;
    reportWriteError(error);
    return false;
}

bool TDatabase::write(const std::function<bool(QSqlDatabase&, QSqlError*)>& statements,
                      const std::function<void()>& beforeCommit)
{
    QSqlDatabase db;
    if (!startTransaction(&db))
        return false;
    QSqlError error;
    QSqlQuery end(db);
    if (!statements(db, &error)) {
        end.exec(QStringLiteral("ROLLBACK"));
        reportWriteError(error);
        return false;
    }
    if (beforeCommit)
        beforeCommit();
    if (!execOrFail(end, QStringLiteral("COMMIT"), &error)) {
        end.exec(QStringLiteral("ROLLBACK"));
        reportWriteError(error);
        return false;
    }
    return true;
}

void TDatabase::setAccessMode(ProjectMgrInterface::TProjectAccessModeEnum mode)
{
    if (mode == m_accessMode)
        return;
    // The access mode of a read-only session is kept in memory only.
    if (m_readOnly) {
        m_accessMode = mode;
        return;
    }
    const bool ok = write([mode](QSqlDatabase& db, QSqlError* error) {
        return TDatabaseSchema::writeMeta(db, QStringLiteral("access_mode"), QString::number(int(mode)), error);
    });
    if (ok)
        m_accessMode = mode;
}

bool TDatabase::objectRename(const KAObject2* object, const QString& name)
{
    if (!checkOwned(object, "object belongs to this database", __LINE__))
        return false;
    if (name.trimmed().isEmpty()) {
        fail(tr("A name cannot be empty.", "Un nom ne peut pas être vide."));
        return false;
    }
    if (name == object->name())
        return true;
    const qint64 id = object->id();
    const bool ok = write([&](QSqlDatabase& db, QSqlError* error) {
        QSqlQuery query(db);
        query.prepare(QStringLiteral("UPDATE objects SET name = ? WHERE id = ?"));
        query.addBindValue(name);
        query.addBindValue(id);
        return execOrFail(query, error);
    });
    if (!ok)
        return false;
    m_index->rename(m_index->object(id), name);
    emit objectsChanged();
    if (touchesCompounds({object}))
        emit compoundsChanged();
    return true;
}

bool TDatabase::objectPropertiesAdd(const KAObject2* object, const TProperty& property)
{
    if (!checkOwned(object, "object belongs to this database", __LINE__))
        return false;
    if (property.key().isEmpty()) {
        fail(tr("A property needs a name.", "Une propriété doit avoir un nom."));
        return false;
    }
    const qint64 id = object->id();
    const bool ok = write([&](QSqlDatabase& db, QSqlError* error) {
        QSqlQuery query(db);
        query.prepare(QStringLiteral(
            "INSERT OR REPLACE INTO properties (object, key, value, unit, comment) VALUES (?, ?, ?, ?, ?)"));
        query.addBindValue(id);
        query.addBindValue(property.key());
        query.addBindValue(TDatabaseSchema::text(property.value()));
        query.addBindValue(TDatabaseSchema::text(property.unit()));
        query.addBindValue(TDatabaseSchema::text(property.comment()));
        return execOrFail(query, error);
    });
    if (!ok)
        return false;
    m_index->setProperty(id, property);
    emit objectsChanged();
    return true;
}

bool TDatabase::deleteObject(const KAObject2* object, bool flag)
{
    Q_UNUSED(flag);
    if (!checkOwned(object, "object belongs to this database", __LINE__))
        return false;
    const QList<const KAObject2*> doomed = m_index->subtree(object);
    const bool ok = write(
        [&doomed](QSqlDatabase& db, QSqlError* error) {
            QSqlQuery objects(db);
            QSqlQuery properties(db);
            QSqlQuery links(db);
            QSqlQuery compounds(db);
            const bool hasCompounds = TDatabaseSchema::hasCompoundTable(db);
            objects.prepare(QStringLiteral("DELETE FROM objects WHERE id = ?"));
            compounds.prepare(QStringLiteral("DELETE FROM compound_peaks WHERE compound = ?"));
            properties.prepare(QStringLiteral("DELETE FROM properties WHERE object = ?"));
            links.prepare(QStringLiteral("DELETE FROM links WHERE identification = ? OR peakdetect = ?"));
            for (const KAObject2* o : doomed) {
                objects.bindValue(0, o->id());
                properties.bindValue(0, o->id());
                links.bindValue(0, o->id());
                links.bindValue(1, o->id());
                if (!execOrFail(objects, error) || !execOrFail(properties, error) || !execOrFail(links, error))
                    return false;
                if (hasCompounds && o->type() == KAObjectTypeCompound) {
                    compounds.bindValue(0, o->id());
                    if (!execOrFail(compounds, error))
                        return false;
                }
            }
            return true;
        },
        // Announced once the rows are gone inside the transaction, so that a
        // refused or locked write announces nothing; the objects are still
        // alive while the listeners look at them.
        [this, &doomed]() {
            QList<const KAObject2*> announced = doomed;
            emit aboutToDeleteObjects(&announced);
        });
    if (!ok)
        return false;
    const bool compoundsTouched = touchesCompounds(doomed);
    m_index->remove(doomed);
    emit objectsChanged();
    if (compoundsTouched)
        emit compoundsChanged();
    return true;
}

bool TDatabase::setProjectProperties(const QString& name, const QString& description, int state)
{
    if (name.trimmed().isEmpty()) {
        fail(tr("A name cannot be empty.", "Un nom ne peut pas être vide."));
        return false;
    }
    const bool ok = write([&](QSqlDatabase& db, QSqlError* error) {
        return TDatabaseSchema::writeMeta(db, QStringLiteral("name"), name, error)
            && TDatabaseSchema::writeMeta(db, QStringLiteral("description"), description, error)
            && TDatabaseSchema::writeMeta(db, QStringLiteral("state"), QString::number(state), error);
    });
    if (!ok)
        return false;
    TProjectHeader header;
    header.name = name;
    header.description = description;
    header.state = state;
    applyHeader(header);
    emit objectsChanged();
    return true;
}

bool TDatabase::synchronize()
{
    const QString path = databasePath(m_folder);
    QString error;
    TProjectHeader header;
    const bool ok = TDatabaseSchema::checkFile(path, &error)
        && TDatabaseConnections::withReadConnection(m_connections->prefix(), path, &error, [&](QSqlDatabase& db) {
               return TDatabaseSchema::checkConnection(db, path, &error)
                   && TDatabaseSchema::readHeader(db, &header, &error);
           });
    if (!ok) {
        fail(error);
        return false;
    }
    m_accessMode = ProjectMgrInterface::TProjectAccessModeEnum(header.accessMode);
    applyHeader(header);
    emit objectsChanged();
    return true;
}

// ---- batch ----------------------------------------------------------------

bool TDatabase::beginBatch()
{
    QSqlDatabase db;
    if (!startTransaction(&db))
        return false;
    m_batch.reset(new TDatabaseBatch(db, m_index->maxId()));
    QString text;
    if (!m_batch->prepare(&text)) {
        m_batch.reset();
        QSqlQuery(db).exec(QStringLiteral("ROLLBACK"));
        fail(text);
        return false;
    }
    return true;
}

bool TDatabase::checkBatch(int line) const
{
    if (m_batch)
        return true;
    t_assert("m_batch", SourceFile, line, false);
    return false;
}

qint64 TDatabase::addObject(KAObjectType type, qint64 parentId, const QString& name, int source, bool multichannel)
{
    if (!checkBatch(__LINE__))
        return 0;
    QString error;
    const qint64 id = m_batch->addObject(*m_index, type, parentId, name, source, multichannel, &error);
    if (id == 0)
        fail(error);
    return id;
}

bool TDatabase::addLink(qint64 identificationId, qint64 peakDetectId)
{
    if (!checkBatch(__LINE__))
        return false;
    QString error;
    if (m_batch->addLink(*m_index, identificationId, peakDetectId, &error))
        return true;
    fail(error);
    return false;
}

bool TDatabase::addProperty(qint64 objectId, const TProperty& property)
{
    if (!checkBatch(__LINE__))
        return false;
    QString error;
    if (m_batch->addProperty(*m_index, objectId, property, &error))
        return true;
    fail(error);
    return false;
}

bool TDatabase::addCompoundPeakDetect(qint64 compoundId, qint64 peakDetectId, const QString& projectFolder)
{
    if (!checkBatch(__LINE__))
        return false;
    QString error;
    if (m_batch->addCompoundRef(*m_index, compoundId, relativeProjectPath(projectFolder), peakDetectId, &error))
        return true;
    fail(error);
    return false;
}

bool TDatabase::commitBatch()
{
    if (!checkBatch(__LINE__))
        return false;
    std::unique_ptr<TDatabaseBatch> batch = std::move(m_batch);
    batch->finish();
    QSqlQuery end(m_connections->connection(nullptr));
    QSqlError error;
    if (!execOrFail(end, QStringLiteral("COMMIT"), &error)) {
        end.exec(QStringLiteral("ROLLBACK"));
        reportWriteError(error);
        return false;
    }
    batch->fileInto(m_index.get());
    emit objectsChanged();
    if (batch->touchesCompounds())
        emit compoundsChanged();
    return true;
}

void TDatabase::rollbackBatch()
{
    if (!m_batch)
        return;
    m_batch.reset();
    QSqlQuery(m_connections->connection(nullptr)).exec(QStringLiteral("ROLLBACK"));
}

} // namespace TechDB
