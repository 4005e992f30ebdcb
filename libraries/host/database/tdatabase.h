#pragma once

#include "kahost_export.h"
#include "kaobjecttype.h"
#include "projectmgrinterface.h"
#include "tproperty.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class KAObject2;
class KAObject2Analysis;
class KAObject2IdentificationGroup;
class KAObject2PeakDetect;
class KAObject2Project;
class KAObject2Well;
class TCompoundAbstract;
class QSqlDatabase;
class QSqlError;

namespace TechDB {

class TDatabaseBatch;
class TDatabaseConnections;
class TDatabaseIndex;
struct TProjectHeader;

// A project's database: one SQLite file in the project folder, loaded whole
// into memory when the project opens. The objects belong to the database and
// keep their addresses while it is open. Every write goes to SQLite in a
// transaction first and changes memory only when the transaction committed.
// Reads are served from memory. The database is used by one thread at a
// time; each thread that writes gets its own SQLite connection, named after
// the database and the thread, removed when the database is destroyed.
class KAHOST_EXPORT TDatabase : public QObject
{
    Q_OBJECT
public:
    static const int SchemaVersion = 2;
    static QString databaseFileName();            // "project.kadb"
    static QString databasePath(const QString& projectFolder);
    static QString settingsPath(const QString& projectFolder);

    // Creates a new, empty project (folder, database file, Settings folder).
    // Refuses an existing database file. Null with *error set on failure.
    static bool createProject(const QString& projectFolder, const QString& name, QString* error);

    // Opens and loads an existing project. A missing, non-SQLite, corrupted,
    // foreign or newer-schema file is refused with *error set and is never
    // written. The project object is the one the database attaches itself to
    // (it receives db() == the new database); it is not owned.
    static TDatabase* open(KAObject2Project* project, bool readOnly, QString* error);

    // Reads only the header fields of a project (name, description, state)
    // without loading it; false with *error set when the file is not a
    // readable project database.
    static bool readProjectHeader(const QString& projectFolder, QString* name, QString* description,
                                  int* state, QString* error);

    ~TDatabase() override;

    // The project folder: the location that fills saved-file paths.
    virtual QString location() const;
    KAObject2Project* project() const { return m_project; }
    bool isReadOnly() const { return m_readOnly; }
    bool isReady() const { return m_ready; }
    QString lastError() const { return m_lastError; }
    int objectCount() const;
    // The kinds that have at least one object, ascending.
    QList<KAObjectType> objectTypes() const;

    ProjectMgrInterface::TProjectAccessModeEnum accessMode() const { return m_accessMode; }
    void setAccessMode(ProjectMgrInterface::TProjectAccessModeEnum mode);

    // Every object of a kind, in database order.
    QList<const KAObject2*> getObjectLst(const KAObjectType& type) const;
    // The children of an object as the user arranged them: structural
    // children of the kind that were not associated elsewhere, plus objects
    // of the kind associated with this one through the "parent"/"parentID"
    // properties.
    QList<const KAObject2*> getObjectVisualChildren(KAObjectType type, const KAObject2* parent) const;
    const KAObject2Analysis* getAnalysis(const QString& name) const;
    const KAObject2IdentificationGroup* getIdentificationGroup(const KAObject2PeakDetect* peakDetect) const;
    const KAObject2* objectById(qint64 id) const;
    QList<const KAObject2*> datasetList(const KAObject2Well* well) const;

    static QString peakDetectMSPath(const KAObject2Analysis* analysis);
    static QString objectFilePath(const KAObject2* object);

    bool objectRename(const KAObject2* object, const QString& name);
    TProperty getObjectProperties(const KAObject2* object, const QString& key, bool* found) const;
    bool objectPropertiesAdd(const KAObject2* object, const TProperty& property);
    // Deletes an object and its whole subtree. The deletion is announced
    // first through aboutToDeleteObjects (connect directly: the list lives
    // on the caller's stack); the objects are freed afterwards. The flag is
    // kept for the host's signature and changes nothing.
    bool deleteObject(const KAObject2* object, bool flag);

    // Compounds (kind 600, children of compound lists, kind 601). Every
    // compound of the open databases of the projects, project after project
    // in the order given (a project listed twice counts once), each
    // database's compounds in database order. Closed projects give none.
    static QList<const TCompoundAbstract*> getAllCompoundinDB(const QList<const KAObject2Project*>& projects);
    // The database open on a project folder, or null.
    static TDatabase* openDatabase(const QString& projectFolder);
    // A compound's detections in order; null where the detection is gone or
    // its project is not open.
    QList<const KAObject2PeakDetect*> compoundPeakDetectList(const TCompoundAbstract* compound) const;
    // Appends a detection of this project or of another open one.
    bool compoundAddPeakDetect(const TCompoundAbstract* compound, const KAObject2PeakDetect* peakDetect);
    // Takes the detection out of the compound's list; the detection stays.
    bool compoundRemovePeakDetect(const TCompoundAbstract* compound, const KAObject2PeakDetect* peakDetect);

    // Project header, written through to the file.
    bool setProjectProperties(const QString& name, const QString& description, int state);

    // Re-reads the header fields (name, description, state, access mode)
    // that another process may have changed (the refresh button).
    bool synchronize();

    // Writing API of the sample generator and of tests: objects appended in
    // one transaction between beginBatch and commitBatch.
    bool beginBatch();
    qint64 addObject(KAObjectType type, qint64 parentId, const QString& name,
                     int source = 0, bool multichannel = false);
    bool addLink(qint64 identificationId, qint64 peakDetectId);
    bool addProperty(qint64 objectId, const TProperty& property);
    // A detection of this project (projectFolder empty) or of the project in
    // projectFolder, appended to a compound's list.
    bool addCompoundPeakDetect(qint64 compoundId, qint64 peakDetectId, const QString& projectFolder = QString());
    bool commitBatch();
    // Abandons the open batch: nothing of it is written or loaded.
    void rollbackBatch();

    // How long a write waits for a lock held by another process (default
    // 2000 ms); applies to every database of the process.
    static void setBusyTimeout(int milliseconds);
    static int busyTimeout();

signals:
    void aboutToDeleteObjects(QList<const KAObject2*>* objects);
    void objectsChanged();
    // Compounds, compound lists or their detections changed.
    void compoundsChanged();

private:
    TDatabase(KAObject2Project* project, const QString& folder, bool readOnly);
    // Runs statements in one IMMEDIATE transaction on the calling thread's
    // connection. beforeCommit runs once every statement succeeded, before
    // the commit. False (message logged, m_lastError set) when the database
    // is read-only, locked beyond the busy timeout, or a statement fails;
    // nothing is then written.
    bool write(const std::function<bool(QSqlDatabase&, QSqlError*)>& statements,
               const std::function<void()>& beforeCommit = {});
    // The read-only refusal, the calling thread's connection and BEGIN
    // IMMEDIATE; false with the failure reported.
    bool startTransaction(QSqlDatabase* db);
    void reportWriteError(const QSqlError& error);
    bool refuseReadOnly();
    void fail(const QString& text);
    bool checkOwned(const KAObject2* object, const char* expression, int line) const;
    bool checkBatch(int line) const;
    void applyHeader(const TProjectHeader& header);
    QString relativeProjectPath(const QString& projectFolder) const;
    static bool touchesCompounds(const QList<const KAObject2*>& objects);

    KAObject2Project* m_project = nullptr; // not owned
    QString m_folder;
    bool m_readOnly = false;
    bool m_ready = false;
    QString m_lastError;
    ProjectMgrInterface::TProjectAccessModeEnum m_accessMode = ProjectMgrInterface::AccessModeOpened;
    std::unique_ptr<TDatabaseIndex> m_index; // owned: the objects and their indexes
    std::unique_ptr<TDatabaseConnections> m_connections; // owned: one SQLite connection per writing thread
    std::unique_ptr<TDatabaseBatch> m_batch; // owned: set between beginBatch and commitBatch
};

} // namespace TechDB
