#pragma once

#include "kahost_export.h"
#include "kaobjecttype.h"
#include "projectmgrinterface.h"
#include "tproperty.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QVector>

class KAObject2;
class KAObject2Analysis;
class KAObject2IdentificationGroup;
class KAObject2PeakDetect;
class KAObject2Project;
class KAObject2Well;

namespace TechDB {

// A project's database: one SQLite file in the project folder, loaded whole
// into memory when the project opens. The objects belong to the database and
// keep their addresses while it is open. Every write goes to SQLite in a
// transaction first and changes memory only when the transaction committed.
class KAHOST_EXPORT TDatabase : public QObject
{
    Q_OBJECT
public:
    static const int SchemaVersion = 1;
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
    int objectCount() const { return m_objects.size(); }

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
    // first through aboutToDeleteObjects; the objects are freed afterwards.
    bool deleteObject(const KAObject2* object, bool flag);

    // Project header, written through to the file.
    bool setProjectProperties(const QString& name, const QString& description, int state);

    // Re-reads the file when another process changed it (the refresh button).
    bool synchronize();

    // Writing API of the sample generator and of tests: objects appended in
    // one transaction between beginBatch and commitBatch.
    bool beginBatch();
    qint64 addObject(KAObjectType type, qint64 parentId, const QString& name,
                     int source = 0, bool multichannel = false);
    bool addLink(qint64 identificationId, qint64 peakDetectId);
    bool commitBatch();

    // How long a write waits for a lock held by another process.
    static void setBusyTimeout(int milliseconds);

signals:
    void aboutToDeleteObjects(QList<const KAObject2*>* objects);
    void objectsChanged();

private:
    explicit TDatabase(KAObject2Project* project, bool readOnly);
    // Implementation details are left to the source file.
    friend class TDatabaseLoader;

    KAObject2Project* m_project = nullptr; // not owned
    bool m_readOnly = false;
    bool m_ready = false;
    QString m_lastError;
    QString m_connectionPrefix;
    ProjectMgrInterface::TProjectAccessModeEnum m_accessMode = ProjectMgrInterface::AccessModeOpened;
    QVector<KAObject2*> m_objects;                   // owned, database order
    QHash<qint64, KAObject2*> m_byId;                // not owned
    QHash<qint32, QList<const KAObject2*>> m_byType; // not owned
};

} // namespace TechDB
