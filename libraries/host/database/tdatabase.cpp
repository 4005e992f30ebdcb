#include "tdatabase.h"

#include "kaobject2.h"
#include "kaobject2analysis.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "messageloggerinterface.h"
#include "tabstractmapper.h"
#include "tassert.h"
#include "tdatabasebatch.h"
#include "tdatabaseindex.h"
#include "tdatabaseloader.h"
#include "tdatabaseschema.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QVariant>

namespace TechDB {

namespace {

const char* const SourceFile = "libraries\\host\\database\\tdatabase";

QAtomicInt g_busyTimeout(2000);
QAtomicInt g_connectionSerial(0);

QString threadTag()
{
    return QString::number(quintptr(QThread::currentThreadId()), 16);
}

QSqlDatabase addConnection(const QString& name, const QString& path, bool readOnly, QString* error)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(int(g_busyTimeout.loadRelaxed()));
    if (readOnly)
        options += QStringLiteral(";QSQLITE_OPEN_READONLY");
    db.setConnectOptions(options);
    if (!db.open()) {
        if (error)
            *error = TDatabaseSchema::tr("The project database %1 cannot be opened: %2",
                                         "La base de données du projet %1 ne peut pas être ouverte : %2")
                         .arg(QDir::toNativeSeparators(path), db.lastError().text());
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    return db;
}

// Runs work on a private read-only connection of the calling thread, then
// removes the connection. Read-only: SQLite then neither writes the file nor
// creates a journal next to it.
bool withReadConnection(const QString& prefix, const QString& path, QString* error,
                        const std::function<bool(QSqlDatabase&)>& work)
{
    const QString name = QStringLiteral("%1ro_%2_%3").arg(prefix, threadTag()).arg(g_connectionSerial.fetchAndAddRelaxed(1));
    bool ok = false;
    {
        QSqlDatabase db = addConnection(name, path, true, error);
        if (!db.isValid())
            return false;
        ok = work(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

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
    g_busyTimeout.storeRelaxed(qMax(0, milliseconds));
}

int TDatabase::busyTimeout()
{
    return g_busyTimeout.loadRelaxed();
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
    const QString connectionName =
        QStringLiteral("kadb_create_%1_%2").arg(threadTag()).arg(g_connectionSerial.fetchAndAddRelaxed(1));
    bool ok = false;
    {
        QSqlDatabase db = addConnection(connectionName, path, false, error);
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
    const bool ok = withReadConnection(QStringLiteral("kadb_header_"), path, error, [&](QSqlDatabase& db) {
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
    const bool loaded = withReadConnection(db->m_connectionPrefix, path, error, [&](QSqlDatabase& connection) {
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
        if (!db->connection(error).isValid())
            return nullptr;
        // A pool thread that opened the project rarely writes; its
        // connection is made again if it does.
        const QCoreApplication* app = QCoreApplication::instance();
        if (!app || QThread::currentThread() != app->thread())
            db->removeConnection(db->m_connectionPrefix + threadTag());
    }

    db->m_accessMode = ProjectMgrInterface::TProjectAccessModeEnum(header.accessMode);
    db->applyHeader(header);
    db->m_ready = true;
    project->dbChange(db.get());
    return db.release();
}

TDatabase::TDatabase(KAObject2Project* project, const QString& folder, bool readOnly)
    : m_project(project)
    , m_folder(folder)
    , m_readOnly(readOnly)
    , m_connectionPrefix(QStringLiteral("kadb_%1_").arg(quintptr(this), 0, 16))
    , m_index(new TDatabaseIndex(this))
{
}

TDatabase::~TDatabase()
{
    m_batch.reset();
    if (m_project && m_project->db() == this)
        m_project->dbChange(nullptr);
    m_index.reset();
    QMutexLocker lock(&m_connectionMutex);
    for (const QString& name : qAsConst(m_connectionNames))
        QSqlDatabase::removeDatabase(name);
    m_connectionNames.clear();
}

QSqlDatabase TDatabase::connection(QString* error)
{
    const QString name = m_connectionPrefix + threadTag();
    if (QSqlDatabase::contains(name)) {
        // A connection of a finished thread whose id came back is refused by
        // Qt as belonging to another thread: replace it.
        QSqlDatabase db = QSqlDatabase::database(name, false);
        if (db.isValid() && db.isOpen())
            return db;
        db = QSqlDatabase();
        removeConnection(name);
    }
    QSqlDatabase db = addConnection(name, databasePath(m_folder), m_readOnly, error);
    if (db.isValid()) {
        QMutexLocker lock(&m_connectionMutex);
        m_connectionNames.append(name);
    }
    return db;
}

void TDatabase::removeConnection(const QString& name)
{
    {
        QMutexLocker lock(&m_connectionMutex);
        m_connectionNames.removeAll(name);
    }
    QSqlDatabase::removeDatabase(name);
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

bool TDatabase::begin(QSqlDatabase& connection, QSqlError* error)
{
    QSqlQuery query(connection);
    // The timeout may have changed since the connection was opened.
    query.exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(busyTimeout()));
    // IMMEDIATE takes the write lock at once, waiting for another writer at
    // most the busy timeout, instead of failing midway through the changes.
    return execOrFail(query, QStringLiteral("BEGIN IMMEDIATE"), error);
}

bool TDatabase::write(const std::function<bool(QSqlDatabase&, QSqlError*)>& statements,
                      const std::function<void()>& beforeCommit)
{
    if (refuseReadOnly())
        return false;
    if (m_batch) {
        t_assert("!m_batch", SourceFile, __LINE__, false);
        return false;
    }
    QString openError;
    QSqlDatabase db = connection(&openError);
    if (!db.isValid()) {
        fail(openError);
        return false;
    }
    QSqlError error;
    if (!begin(db, &error)) {
        reportWriteError(error);
        return false;
    }
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
            objects.prepare(QStringLiteral("DELETE FROM objects WHERE id = ?"));
            properties.prepare(QStringLiteral("DELETE FROM properties WHERE object = ?"));
            links.prepare(QStringLiteral("DELETE FROM links WHERE identification = ? OR peakdetect = ?"));
            for (const KAObject2* o : doomed) {
                objects.bindValue(0, o->id());
                properties.bindValue(0, o->id());
                links.bindValue(0, o->id());
                links.bindValue(1, o->id());
                if (!execOrFail(objects, error) || !execOrFail(properties, error) || !execOrFail(links, error))
                    return false;
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
    m_index->remove(doomed);
    emit objectsChanged();
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
        && withReadConnection(m_connectionPrefix, path, &error, [&](QSqlDatabase& db) {
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
    if (refuseReadOnly())
        return false;
    if (m_batch) {
        t_assert("!m_batch", SourceFile, __LINE__, false);
        return false;
    }
    QString openError;
    QSqlDatabase db = connection(&openError);
    if (!db.isValid()) {
        fail(openError);
        return false;
    }
    QSqlError error;
    if (!begin(db, &error)) {
        reportWriteError(error);
        return false;
    }
    // Ids are never reused: the sequence remembers deleted ones too.
    qint64 lastId = m_index->maxId();
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (query.exec(QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = 'objects'")) && query.next())
        lastId = qMax(lastId, query.value(0).toLongLong());
    query.finish();
    m_batch.reset(new TDatabaseBatch(db, lastId + 1));
    QString text;
    if (!m_batch->prepare(&text)) {
        m_batch.reset();
        query.exec(QStringLiteral("ROLLBACK"));
        fail(text);
        return false;
    }
    return true;
}

qint64 TDatabase::addObject(KAObjectType type, qint64 parentId, const QString& name, int source, bool multichannel)
{
    if (!m_batch) {
        t_assert("m_batch", SourceFile, __LINE__, false);
        return 0;
    }
    QString error;
    const qint64 id = m_batch->addObject(*m_index, type, parentId, name, source, multichannel, &error);
    if (id == 0)
        fail(error);
    return id;
}

bool TDatabase::addLink(qint64 identificationId, qint64 peakDetectId)
{
    if (!m_batch) {
        t_assert("m_batch", SourceFile, __LINE__, false);
        return false;
    }
    QString error;
    if (m_batch->addLink(*m_index, identificationId, peakDetectId, &error))
        return true;
    fail(error);
    return false;
}

bool TDatabase::addProperty(qint64 objectId, const TProperty& property)
{
    if (!m_batch) {
        t_assert("m_batch", SourceFile, __LINE__, false);
        return false;
    }
    QString error;
    if (m_batch->addProperty(*m_index, objectId, property, &error))
        return true;
    fail(error);
    return false;
}

bool TDatabase::commitBatch()
{
    if (!m_batch) {
        t_assert("m_batch", SourceFile, __LINE__, false);
        return false;
    }
    std::unique_ptr<TDatabaseBatch> batch = std::move(m_batch);
    batch->finish();
    QString openError;
    QSqlDatabase db = connection(&openError);
    QSqlQuery end(db);
    QSqlError error;
    if (!execOrFail(end, QStringLiteral("COMMIT"), &error)) {
        end.exec(QStringLiteral("ROLLBACK"));
        reportWriteError(error);
        return false;
    }
    batch->fileInto(m_index.get());
    emit objectsChanged();
    return true;
}

void TDatabase::rollbackBatch()
{
    if (!m_batch)
        return;
    m_batch.reset();
    QString openError;
    QSqlDatabase db = connection(&openError);
    QSqlQuery end(db);
    end.exec(QStringLiteral("ROLLBACK"));
}

} // namespace TechDB
