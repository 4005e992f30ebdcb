// STUB: to be replaced by the real SQLite database.
#include "tdatabase.h"
#include "tabstractmapper.h"
#include "tsamplegenerator.h"
#include "kaobject2.h"

namespace TechDB {
QList<const KAObject2*> TAbstractMapper::getObjectChildLst(const KAObject2* object, const KAObjectType& type)
{
    QList<const KAObject2*> r;
    if (object)
        for (const KAObject2* c : object->children())
            if (c->type() == type) r.append(c);
    return r;
}
QString TDatabase::databaseFileName() { return QStringLiteral("project.kadb"); }
QString TDatabase::databasePath(const QString& f) { return f + "/project.kadb"; }
QString TDatabase::settingsPath(const QString& f) { return f + "/Settings"; }
bool TDatabase::createProject(const QString&, const QString&, QString*) { return false; }
TDatabase* TDatabase::open(KAObject2Project*, bool, QString*) { return nullptr; }
bool TDatabase::readProjectHeader(const QString&, QString*, QString*, int*, QString*) { return false; }
TDatabase::TDatabase(KAObject2Project* p, bool r) : m_project(p), m_readOnly(r) {}
TDatabase::~TDatabase() = default;
QString TDatabase::location() const { return QString(); }
void TDatabase::setAccessMode(ProjectMgrInterface::TProjectAccessModeEnum m) { m_accessMode = m; }
QList<const KAObject2*> TDatabase::getObjectLst(const KAObjectType& t) const { return m_byType.value(t); }
QList<const KAObject2*> TDatabase::getObjectVisualChildren(KAObjectType t, const KAObject2* p) const { return TAbstractMapper::getObjectChildLst(p, t); }
const KAObject2Analysis* TDatabase::getAnalysis(const QString&) const { return nullptr; }
const KAObject2IdentificationGroup* TDatabase::getIdentificationGroup(const KAObject2PeakDetect*) const { return nullptr; }
const KAObject2* TDatabase::objectById(qint64) const { return nullptr; }
QList<const KAObject2*> TDatabase::datasetList(const KAObject2Well*) const { return {}; }
QString TDatabase::peakDetectMSPath(const KAObject2Analysis*) { return QString(); }
QString TDatabase::objectFilePath(const KAObject2*) { return QString(); }
bool TDatabase::objectRename(const KAObject2*, const QString&) { return false; }
TProperty TDatabase::getObjectProperties(const KAObject2*, const QString&, bool* f) const { if (f) *f = false; return {}; }
bool TDatabase::objectPropertiesAdd(const KAObject2*, const TProperty&) { return false; }
bool TDatabase::deleteObject(const KAObject2*, bool) { return false; }
bool TDatabase::setProjectProperties(const QString&, const QString&, int) { return false; }
bool TDatabase::synchronize() { return false; }
bool TDatabase::beginBatch() { return false; }
qint64 TDatabase::addObject(KAObjectType, qint64, const QString&, int, bool) { return 0; }
bool TDatabase::addLink(qint64, qint64) { return false; }
bool TDatabase::commitBatch() { return false; }
void TDatabase::setBusyTimeout(int) {}
} // namespace TechDB

QStringList TSampleGenerator::generate(const QString&, const Options&, QString*) { return {}; }
bool TSampleGenerator::generateProject(const QString&, const QString&, const Options&, quint32, QString*) { return false; }
