#include "applicationinterface.h"
#include "kaobject2analysis.h"
#include "kaobject2folder.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserplugin.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace TreeTest;

Q_DECLARE_METATYPE(const KAObject2*)

namespace {

// A plug-in that counts what the controller asks of it and accepts or
// refuses everything.
class CountingPlugin : public KAProjectBrowserPlugin
{
public:
    CountingPlugin(KAAbstractBrowserCtrl* ctrl, const QString& name, bool accept)
        : KAProjectBrowserPlugin(ctrl, name), m_accept(accept) {}
    void init() override {}
    bool refreshRequested(KAObjectType, const KAObject2*) override { return false; }
    bool fillNodeOnExpand(Node*) override { ++expands; return m_accept; }
    bool deleteObject(Node*, bool) override { ++deletes; return m_accept; }
    bool renameObject(Node*, QString& name) override
    {
        ++renames;
        if (m_accept)
            name += QLatin1Char('+');
        return m_accept;
    }
    bool moveItem(const QList<const KAObject2*>&, Node*, QList<const KAObject2*>&) override
    {
        ++moves;
        return m_accept;
    }
    KATreeWidgetItemCreatorAbstract* itemCreator() override { return nullptr; }

    int expands = 0;
    int deletes = 0;
    int renames = 0;
    int moves = 0;

private:
    bool m_accept;
};

QStringList logTexts()
{
    return MessageLoggerInterface::returnMe()->texts();
}

} // namespace

class tst_ProjectEditingRules : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void createFolderMakesUniqueNames_data();
    void createFolderMakesUniqueNames();
    void createFolderCopiesAllowedKinds_data();
    void createFolderCopiesAllowedKinds();
    void renameFolderToExistingName();
    void renameFolderToItsOwnName();
    void renameDatabaseObject();
    void deleteUserFolderWithNestedFolders();
    void refreshAfterDeletingPlacementFolder();
    void deleteDefaultFolderRefused();
    void managerRefusesExternalKinds_data();
    void managerRefusesExternalKinds();
    void managerDeletesDatabaseObject();
    void moveIntoReadOnlyTarget();
    void moveOfKindNotAllowed();
    void moveFolderIntoOwnSubfolder();
    void moveFolderWithOtherAllowedKinds();
    void moveFolderNameClash();
    void moveFolderAndSave();
    void moveDatasetAssociates();
    void reparentRecordsParent_data();
    void reparentRecordsParent();
    void controllerReparentRefused();
    void renameAsksEveryPlugin();
    void deleteStopsAtFirstPlugin();
    void moveStopsAtFirstPlugin();
    void expandStopsAtFirstPlugin();

private:
    void build();
    KAProjectBrowserMgr* mgr() const { return m_ctrl->mgrList().first(); }
    TechDB::TDatabase* db() const { return m_project->db(); }
    Node* analysisBranch() const { return mgr()->getTree(KAObjectTypeAnalysis); }
    const KAObject2* analysis(int i) const { return db()->getObjectLst(KAObjectTypeAnalysis).at(i); }
    QString defaultPath() const
    {
        return QDir(m_project->folder()).filePath(QStringLiteral("Settings/default.projectbrowser.xml"));
    }
    // A node of the external-folders plug-in's kind under the project root.
    Node* externalNode(KAObjectType type = KAObjectTypeExternalFolders);

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
};

void tst_ProjectEditingRules::initTestCase()
{
    kaInitTestEnvironment();
    qRegisterMetaType<const KAObject2*>();
}

void tst_ProjectEditingRules::init()
{
    m_fixture.reset(new TestFixture);
    m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"));
    QVERIFY(m_project);
    m_filter.reset(new KAProjectBrowserFilterPackage);
    build();
    MessageLoggerInterface::returnMe()->clear();
}

void tst_ProjectEditingRules::cleanup()
{
    m_ctrl.reset();
    m_filter.reset();
    m_fixture.reset();
    m_project = nullptr;
}

void tst_ProjectEditingRules::build()
{
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(m_filter.get(), m_project, true);
    QVERIFY(analysisBranch());
}

Node* tst_ProjectEditingRules::externalNode(KAObjectType type)
{
    auto* node = new Node(mgr()->getTree(), -1);
    node->setData(new KAObject2(type, QStringLiteral("External <data>")));
    node->setOwnsData(true);
    return node;
}

// ---- folders --------------------------------------------------------------------

void tst_ProjectEditingRules::createFolderMakesUniqueNames_data()
{
    QTest::addColumn<QStringList>("requests");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("Data three times") << QStringList{"Data", "Data", "Data"} << QStringList{"Data", "Data_1", "Data_2"};
    QTest::newRow("suffix on the requested name") << QStringList{"Data", "Data_1", "Data_1"}
                                                  << QStringList{"Data", "Data_1", "Data_1_1"};
    QTest::newRow("first free number") << QStringList{"Data", "Data_2", "Data", "Data"}
                                       << QStringList{"Data", "Data_2", "Data_1", "Data_3"};
    QTest::newRow("case sensitive") << QStringList{"Data", "data"} << QStringList{"Data", "data"};
}

void tst_ProjectEditingRules::createFolderMakesUniqueNames()
{
    QFETCH(QStringList, requests);
    QFETCH(QStringList, names);
    Node* parent = analysisBranch();
    QStringList made;
    for (const QString& request : requests) {
        const int before = parent->childCount();
        Node* node = m_ctrl->createFolder(request, parent);
        QVERIFY(node);
        QCOMPARE(parent->firstChild(), node);
        QCOMPARE(parent->childCount(), before + 1);
        QCOMPARE(node->childCount(), 0);
        QCOMPARE(int(static_cast<const KAObject2Folder*>(node->data())->folderKind()), int(KAObjectTypeUserFolder));
        made.append(node->data()->name());
    }
    QCOMPARE(made, names);
    QVERIFY(!m_ctrl->createFolder(QStringLiteral("Orphan"), nullptr));
}

void tst_ProjectEditingRules::createFolderCopiesAllowedKinds_data()
{
    QTest::addColumn<int>("branch");
    QTest::addColumn<bool>("nested");
    QTest::addColumn<QList<int>>("allowed");
    QTest::newRow("analyses") << 1 << false << QList<int>{1};
    QTest::newRow("numerical arrays") << 3 << false << QList<int>{3};
    QTest::newRow("indexations") << 528 << false << QList<int>{528, 281};
    QTest::newRow("identifications") << 277 << false << QList<int>{281, 264};
    QTest::newRow("inside a user folder") << 528 << true << QList<int>{528, 281};
}

void tst_ProjectEditingRules::createFolderCopiesAllowedKinds()
{
    QFETCH(int, branch);
    QFETCH(bool, nested);
    QFETCH(QList<int>, allowed);
    Node* parent = mgr()->getTree(KAObjectType(branch));
    if (nested)
        parent = m_ctrl->createFolder(QStringLiteral("Outer"), parent);
    Node* node = m_ctrl->createFolder(QStringLiteral("Inner"), parent);
    QVERIFY(node);
    QList<int> kinds;
    for (KAObjectType kind : node->data()->getAllowedVisualReparentType())
        kinds.append(kind);
    QCOMPARE(kinds, allowed);
}

void tst_ProjectEditingRules::renameFolderToExistingName()
{
    Node* data = m_ctrl->createFolder(QStringLiteral("Data"), analysisBranch());
    m_ctrl->createFolder(QStringLiteral("Deep"), data);
    Node* other = m_ctrl->createFolder(QStringLiteral("Other"), analysisBranch());
    QString name = QStringLiteral("Data");
    QVERIFY(m_ctrl->renameObject(other, name));
    QCOMPARE(name, QStringLiteral("Data_1"));
    QCOMPARE(other->data()->name(), QStringLiteral("Data_1"));

    // A folder deeper in the same subtree counts as well.
    name = QStringLiteral("Deep");
    QVERIFY(m_ctrl->renameObject(other, name));
    QCOMPARE(name, QStringLiteral("Deep_1"));
    QCOMPARE(other->data()->name(), QStringLiteral("Deep_1"));

    // The rename is saved.
    QVERIFY(readSavedEntries(defaultPath()).contains({"KAObject2Analysis", "Deep_1", "/Analysis/Deep_1"}));
}

void tst_ProjectEditingRules::renameFolderToItsOwnName()
{
    Node* data = m_ctrl->createFolder(QStringLiteral("Data"), analysisBranch());
    m_ctrl->createFolder(QStringLiteral("Data"), analysisBranch()); // Data_1
    QString name = QStringLiteral("Data");
    QVERIFY(m_ctrl->renameObject(data, name));
    QCOMPARE(name, QStringLiteral("Data"));
    QCOMPARE(data->data()->name(), QStringLiteral("Data"));
}

void tst_ProjectEditingRules::renameDatabaseObject()
{
    const KAObject2* object = analysis(0);
    const qint64 id = object->id();
    Node* folder = m_ctrl->createFolder(QStringLiteral("Kept"), analysisBranch());
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({object}, folder, rejected));
    Node* node = nodeOf(mgr()->getTree(), object);
    QString name = QStringLiteral("Renamed « été » & co");
    QVERIFY(m_ctrl->renameObject(node, name));
    QCOMPARE(name, QStringLiteral("Renamed « été » & co"));
    QCOMPARE(object->name(), name);
    QCOMPARE(static_cast<const KAObject2*>(db()->getAnalysis(name)), object);
    // The layout is saved under the new name.
    QVERIFY(readSavedEntries(defaultPath()).contains({"KAObject2Analysis", name, "/Analysis/Kept"}));

    m_ctrl.reset();
    QVERIFY(TestFixture::reopen(m_project));
    QCOMPARE(db()->objectById(id)->name(), name);
    QVERIFY(db()->getAnalysis(name));
    build();
    QCOMPARE(folderChain(nodeOf(mgr()->getTree(), db()->objectById(id))), QStringLiteral("/Analysis/Kept"));

    // An empty name is refused by the database.
    MessageLoggerInterface::returnMe()->clear();
    QString empty = QStringLiteral("  ");
    QVERIFY(!m_ctrl->renameObject(nodeOf(mgr()->getTree(), db()->objectById(id)), empty));
    QCOMPARE(db()->objectById(id)->name(), name);
}

void tst_ProjectEditingRules::deleteUserFolderWithNestedFolders()
{
    const int analyses = db()->getObjectLst(KAObjectTypeAnalysis).size();
    const KAObject2* inside = analysis(0);
    Node* batch = m_ctrl->createFolder(QStringLiteral("Batch"), analysisBranch());
    Node* sub1 = m_ctrl->createFolder(QStringLiteral("Sub 1"), batch);
    m_ctrl->createFolder(QStringLiteral("Sub 2"), batch);
    m_ctrl->createFolder(QStringLiteral("Deep"), sub1);
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({inside}, sub1, rejected));

    QVERIFY(m_ctrl->deleteObject(batch, false));
    QCOMPARE(nodesOfType(analysisBranch(), KAObjectTypeFolder).size(), 1); // the branch alone
    // The analysis stays in the database.
    QCOMPARE(db()->getObjectLst(KAObjectTypeAnalysis).size(), analyses);
    QVERIFY(db()->getObjectLst(KAObjectTypeAnalysis).contains(inside));
    QVERIFY(logTexts().filter(QStringLiteral("Assertion")).isEmpty());

    m_ctrl.reset();
    QVERIFY(TestFixture::reopen(m_project));
    QCOMPARE(db()->getObjectLst(KAObjectTypeAnalysis).size(), analyses);
    // Rebuilt, the analysis is back directly in its branch.
    build();
    QCOMPARE(nodeOf(mgr()->getTree(), analysis(0))->parent(), analysisBranch());
    QCOMPARE(nodesOfType(analysisBranch(), KAObjectTypeFolder).size(), 1);
}

// Objects rebuilt after their saved folder was deleted go to their branch.
void tst_ProjectEditingRules::refreshAfterDeletingPlacementFolder()
{
    const KAObject2* indexation = db()->getObjectLst(KAObjectTypeGlobalIndexation).first();
    Node* kovats = m_ctrl->createFolder(QStringLiteral("Kovats"), mgr()->getTree(KAObjectTypeGlobalIndexation));
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({indexation}, kovats, rejected));
    m_ctrl.reset(); // saved
    build();        // the indexation is placed in Kovats from the saved layout
    Node* branch = mgr()->getTree(KAObjectTypeGlobalIndexation);
    kovats = childFolder(branch, QStringLiteral("Kovats"));
    QVERIFY(kovats);
    QCOMPARE(nodeOf(mgr()->getTree(), indexation)->parent(), kovats);

    QVERIFY(m_ctrl->deleteObject(kovats, false));
    QVERIFY(!childFolder(branch, QStringLiteral("Kovats")));
    m_ctrl->refreshRequested(KAObjectTypeGlobalIndexation, nullptr);
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeGlobalIndexation).size(),
             db()->getObjectLst(KAObjectTypeGlobalIndexation).size());
    Node* node = nodeOf(mgr()->getTree(), indexation);
    QVERIFY2(node, "the indexation is rebuilt into the tree");
    QCOMPARE(node->parent(), branch);
}

void tst_ProjectEditingRules::deleteDefaultFolderRefused()
{
    Node* branch = analysisBranch();
    QVERIFY(!m_ctrl->deleteObject(branch, false));
    QCOMPARE(analysisBranch(), branch);
    QCOMPARE(childNodes(mgr()->getTree()).size(), 4);
}

void tst_ProjectEditingRules::managerRefusesExternalKinds_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("external folders 2522") << 2522;
    QTest::newRow("external file 2523") << 2523;
}

void tst_ProjectEditingRules::managerRefusesExternalKinds()
{
    QFETCH(int, type);
    Node* node = externalNode(KAObjectType(type));
    QVERIFY(!mgr()->deleteObject(node, false));
    QCOMPARE(node->parent(), mgr()->getTree());
    QVERIFY(node->data());
    // Refused before the database is asked (it would report a foreign object).
    QCOMPARE(logTexts(), QStringList());
}

void tst_ProjectEditingRules::managerDeletesDatabaseObject()
{
    const QList<const KAObject2*> wells = db()->getObjectLst(KAObjectTypeWell);
    const KAObject2* well = wells.first();
    const QString name = well->name();
    QVERIFY(mgr()->deleteObject(nodeOf(mgr()->getTree(), well), false));
    QCOMPARE(db()->getObjectLst(KAObjectTypeWell).size(), wells.size() - 1);
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeWell).size(), wells.size() - 1);
    m_ctrl.reset();
    QVERIFY(TestFixture::reopen(m_project));
    QCOMPARE(db()->getObjectLst(KAObjectTypeWell).size(), wells.size() - 1);
    for (const KAObject2* w : db()->getObjectLst(KAObjectTypeWell))
        QVERIFY(w->name() != name);
}

// ---- moves ------------------------------------------------------------------------

void tst_ProjectEditingRules::moveIntoReadOnlyTarget()
{
    Node* target = m_ctrl->createFolder(QStringLiteral("Locked"), analysisBranch());
    static_cast<KAObject2Folder*>(target->data())->setReadOnly(true);
    QList<const KAObject2*> rejected;
    QVERIFY(!m_ctrl->moveItem({analysis(0), analysis(1), analysis(2)}, target, rejected));
    QCOMPARE(logTexts(), QStringList{"This move is not allowed"});
    QCOMPARE(int(MessageLoggerInterface::returnMe()->entries().first().level), int(MessageLoggerInterface::LevelError));
    QVERIFY(rejected.isEmpty());
    QCOMPARE(target->childCount(), 0);

    // A target without an object is refused the same way.
    MessageLoggerInterface::returnMe()->clear();
    auto* bare = new Node(analysisBranch(), -1);
    QVERIFY(!mgr()->moveItem({analysis(0), analysis(1)}, bare, rejected));
    QCOMPARE(logTexts(), QStringList{"This move is not allowed"});
    QCOMPARE(bare->childCount(), 0);
}

void tst_ProjectEditingRules::moveOfKindNotAllowed()
{
    QVERIFY(db()->objectRename(analysis(0), QStringLiteral("A&B <i>x</i> \"q\"")));
    Node* plates = m_ctrl->createFolder(QStringLiteral("Plates"), mgr()->getTree(KAObjectTypeWell));
    const KAObject2* well = db()->getObjectLst(KAObjectTypeWell).first();
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({analysis(0), well}, plates, rejected));
    QCOMPARE(logTexts(), QStringList{"The move of <b>A&amp;B &lt;i&gt;x&lt;/i&gt; &quot;q&quot;</b> is not allowed into "
                                     "this folder"});
    QCOMPARE(rejected, QList<const KAObject2*>{analysis(0)});
    QCOMPARE(nodeOf(mgr()->getTree(), well)->parent(), plates);
    QCOMPARE(nodeOf(mgr()->getTree(), analysis(0))->parent(), analysisBranch());
}

void tst_ProjectEditingRules::moveFolderIntoOwnSubfolder()
{
    Node* outer = m_ctrl->createFolder(QStringLiteral("Outer"), analysisBranch());
    Node* inner = m_ctrl->createFolder(QStringLiteral("Inner"), outer);
    QFile::remove(defaultPath());
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({outer->data()}, inner, rejected));
    QCOMPARE(logTexts(), QStringList());
    QVERIFY(rejected.isEmpty());
    QCOMPARE(outer->parent(), analysisBranch());
    QCOMPARE(inner->parent(), outer);
    QVERIFY(QFile::exists(defaultPath())); // saved all the same
    QVERIFY(readSavedEntries(defaultPath()).contains({"KAObject2Analysis", "Inner", "/Analysis/Outer/Inner"}));
}

void tst_ProjectEditingRules::moveFolderWithOtherAllowedKinds()
{
    Node* plates = m_ctrl->createFolder(QStringLiteral("Plates"), mgr()->getTree(KAObjectTypeWell));
    Node* target = m_ctrl->createFolder(QStringLiteral("Batch"), analysisBranch());
    Node* sameKinds = m_ctrl->createFolder(QStringLiteral("Same"), analysisBranch());
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({plates->data(), sameKinds->data()}, target, rejected));
    QCOMPARE(logTexts(), QStringList{"The move of <b>Plates</b> is not allowed into this folder"});
    QCOMPARE(rejected, QList<const KAObject2*>{plates->data()});
    QCOMPARE(plates->parent(), mgr()->getTree(KAObjectTypeWell));
    QCOMPARE(sameKinds->parent(), target);

    // Alone, nothing is left to move.
    MessageLoggerInterface::returnMe()->clear();
    rejected.clear();
    QVERIFY(!m_ctrl->moveItem({plates->data()}, target, rejected));
    QCOMPARE(rejected.size(), 1);
}

void tst_ProjectEditingRules::moveFolderNameClash()
{
    Node* dup = m_ctrl->createFolder(QStringLiteral("Dup"), analysisBranch());
    Node* target = m_ctrl->createFolder(QStringLiteral("Target"), analysisBranch());
    Node* below = m_ctrl->createFolder(QStringLiteral("Below"), target);
    // Names are unique within the parent's subtree only: a second Dup deeper down.
    QCOMPARE(m_ctrl->createFolder(QStringLiteral("Dup"), below)->data()->name(), QStringLiteral("Dup"));
    QList<const KAObject2*> rejected;
    QVERIFY(!m_ctrl->moveItem({dup->data()}, target, rejected));
    QCOMPARE(logTexts(), QStringList{"A folder with that name already exists"});
    QCOMPARE(rejected, QList<const KAObject2*>{dup->data()});
    QCOMPARE(dup->parent(), analysisBranch());
}

void tst_ProjectEditingRules::moveFolderAndSave()
{
    Node* a = m_ctrl->createFolder(QStringLiteral("A"), analysisBranch());
    Node* b = m_ctrl->createFolder(QStringLiteral("B"), analysisBranch());
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({analysis(0)}, a, rejected));
    QVERIFY(m_ctrl->moveItem({a->data()}, b, rejected));
    QCOMPARE(a->parent(), b);
    QVERIFY(rejected.isEmpty());
    const QList<SavedEntry> entries = readSavedEntries(defaultPath());
    QVERIFY(entries.contains({"KAObject2Analysis", "A", "/Analysis/B/A"}));
    QVERIFY(entries.contains({"KAObject2Analysis", analysis(0)->name(), "/Analysis/B/A"}));

    m_ctrl.reset();
    build();
    Node* restoredB = childFolder(analysisBranch(), QStringLiteral("B"));
    QVERIFY(restoredB);
    QCOMPARE(nodeOf(mgr()->getTree(), analysis(0))->parent(), childFolder(restoredB, QStringLiteral("A")));

    // Empty list and null target are refused.
    QVERIFY(!m_ctrl->moveItem({}, restoredB, rejected));
    QVERIFY(!m_ctrl->moveItem({analysis(1)}, nullptr, rejected));
}

void tst_ProjectEditingRules::moveDatasetAssociates()
{
    Node* folder = m_ctrl->createFolder(QStringLiteral("Associated"), analysisBranch());
    static_cast<KAObject2Folder*>(folder->data())->addAllowedVisualReparentType(KAObjectTypeDataset);
    const KAObject2* dataset = payloadsOfType(mgr()->getTree(KAObjectTypeWell), KAObjectTypeDataset).first();
    QList<const KAObject2*> rejected;
    // Associated, not moved: nothing is left on the list of nodes to move.
    QVERIFY(!m_ctrl->moveItem({dataset}, folder, rejected));
    bool found = false;
    QCOMPARE(db()->getObjectProperties(dataset, QStringLiteral("parent"), &found).value(), QStringLiteral("260"));
    QVERIFY(found);
    QCOMPARE(db()->getObjectProperties(dataset, QStringLiteral("parentID"), &found).value(),
             QStringLiteral("Associated"));
    QCOMPARE(logTexts(), QStringList{QStringLiteral("Object %1 was successfully associated to object Associated")
                                         .arg(dataset->name())});

    // Without kind 4 among the folder's kinds, a dataset is skipped silently.
    MessageLoggerInterface::returnMe()->clear();
    Node* plain = m_ctrl->createFolder(QStringLiteral("Plain"), analysisBranch());
    QVERIFY(!m_ctrl->moveItem({dataset}, plain, rejected));
    QCOMPARE(logTexts(), QStringList());
    QVERIFY(rejected.isEmpty());
    QCOMPARE(db()->getObjectProperties(dataset, QStringLiteral("parentID"), &found).value(),
             QStringLiteral("Associated"));
}

void tst_ProjectEditingRules::reparentRecordsParent_data()
{
    QTest::addColumn<bool>("signalUnderAnalysis");
    QTest::newRow("dataset of a well to an analysis") << false;
    QTest::newRow("signal of an analysis to another analysis") << true;
}

void tst_ProjectEditingRules::reparentRecordsParent()
{
    QFETCH(bool, signalUnderAnalysis);
    const KAObject2* newParent = analysis(2);
    const KAObject2* object = signalUnderAnalysis
        ? db()->getObjectVisualChildren(KAObjectTypeSignal, analysis(0)).first()
        : payloadsOfType(mgr()->getTree(KAObjectTypeWell), KAObjectTypeDataset).first();
    Node* node = nodeOf(mgr()->getTree(), object);
    const KAObject2* oldParent = node->parent()->data();
    const qint64 id = object->id();
    const QString objectName = object->name();
    QSignalSpy changed(ApplicationInterface::returnMe(), &ApplicationInterface::refreshObject);

    QVERIFY(mgr()->reparentItem(node, nodeOf(mgr()->getTree(), newParent)));
    bool found = false;
    const TProperty parent = db()->getObjectProperties(object, QStringLiteral("parent"), &found);
    QVERIFY(found);
    QCOMPARE(parent.value(), QStringLiteral("1"));
    QVERIFY(parent.unit().isEmpty());
    QVERIFY(parent.comment().isEmpty());
    QCOMPARE(db()->getObjectProperties(object, QStringLiteral("parentID"), &found).value(), newParent->name());
    QVERIFY(found);
    QCOMPARE(logTexts(), QStringList{QStringLiteral("Object %1 was successfully associated to object %2")
                                         .arg(objectName.toHtmlEscaped(), newParent->name().toHtmlEscaped())});
    QCOMPARE(int(MessageLoggerInterface::returnMe()->entries().first().level),
             int(MessageLoggerInterface::LevelInformation));
    QList<const KAObject2*> notified;
    for (const QList<QVariant>& args : qAsConst(changed))
        notified.append(args.first().value<const KAObject2*>());
    if (signalUnderAnalysis)
        QCOMPARE(notified, (QList<const KAObject2*>{oldParent, object, newParent}));
    else
        QCOMPARE(notified, (QList<const KAObject2*>{object, newParent}));
    QCOMPARE(node->parent()->data(), oldParent); // the tree is not rearranged here

    const QString parentName = newParent->name();
    m_ctrl.reset();
    QVERIFY(TestFixture::reopen(m_project));
    const KAObject2* reread = db()->objectById(id);
    QVERIFY(reread);
    QCOMPARE(db()->getObjectProperties(reread, QStringLiteral("parent"), &found).value(), QStringLiteral("1"));
    QCOMPARE(db()->getObjectProperties(reread, QStringLiteral("parentID"), &found).value(), parentName);
}

void tst_ProjectEditingRules::controllerReparentRefused()
{
    Node* folder = m_ctrl->createFolder(QStringLiteral("Outer"), analysisBranch());
    Node* inner = m_ctrl->createFolder(QStringLiteral("Inner"), folder);
    m_ctrl->reparentItem(folder, inner);
    QCOMPARE(logTexts(), QStringList{"Moving item failed"});
    QCOMPARE(int(MessageLoggerInterface::returnMe()->entries().first().level),
             int(MessageLoggerInterface::LevelInformation));
    MessageLoggerInterface::returnMe()->clear();
    m_ctrl->reparentItem(folder, folder);
    QCOMPARE(logTexts(), QStringList{"Moving item failed"});
    QVERIFY(!mgr()->reparentItem(nullptr, folder));
    QVERIFY(!mgr()->reparentItem(folder, nullptr));
}

// ---- dispatch to the plug-ins -------------------------------------------------------

void tst_ProjectEditingRules::renameAsksEveryPlugin()
{
    auto* first = new CountingPlugin(m_ctrl.get(), QStringLiteral("first"), true);
    auto* second = new CountingPlugin(m_ctrl.get(), QStringLiteral("second"), true);
    auto* refusing = new CountingPlugin(m_ctrl.get(), QStringLiteral("refusing"), false);
    m_ctrl->addPlugin(first, nullptr);
    m_ctrl->addPlugin(refusing, nullptr);
    m_ctrl->addPlugin(second, nullptr);
    Node* node = externalNode();
    QString name = QStringLiteral("New");
    QVERIFY(m_ctrl->renameObject(node, name));
    QCOMPARE(first->renames, 1);
    QCOMPARE(refusing->renames, 1);
    QCOMPARE(second->renames, 1);
    QCOMPARE(name, QStringLiteral("New++"));

    // The manager accepting ends the dispatch before the plug-ins.
    Node* folder = m_ctrl->createFolder(QStringLiteral("Mine"), analysisBranch());
    name = QStringLiteral("Yours");
    QVERIFY(m_ctrl->renameObject(folder, name));
    QCOMPARE(first->renames, 1);
}

void tst_ProjectEditingRules::deleteStopsAtFirstPlugin()
{
    auto* refusing = new CountingPlugin(m_ctrl.get(), QStringLiteral("refusing"), false);
    auto* first = new CountingPlugin(m_ctrl.get(), QStringLiteral("first"), true);
    auto* second = new CountingPlugin(m_ctrl.get(), QStringLiteral("second"), true);
    m_ctrl->addPlugin(refusing, nullptr);
    m_ctrl->addPlugin(first, nullptr);
    m_ctrl->addPlugin(second, nullptr);
    Node* node = externalNode();
    const int before = mgr()->getTree()->childCount();
    QVERIFY(m_ctrl->deleteObject(node, true));
    QCOMPARE(refusing->deletes, 1);
    QCOMPARE(first->deletes, 1);
    QCOMPARE(second->deletes, 0);
    QCOMPARE(mgr()->getTree()->childCount(), before - 1);
}

void tst_ProjectEditingRules::moveStopsAtFirstPlugin()
{
    auto* refusing = new CountingPlugin(m_ctrl.get(), QStringLiteral("refusing"), false);
    auto* first = new CountingPlugin(m_ctrl.get(), QStringLiteral("first"), true);
    auto* second = new CountingPlugin(m_ctrl.get(), QStringLiteral("second"), true);
    m_ctrl->addPlugin(refusing, nullptr);
    m_ctrl->addPlugin(first, nullptr);
    m_ctrl->addPlugin(second, nullptr);
    Node* target = externalNode();
    Node* moved = externalNode(KAObjectTypeExternalFile);
    QList<const KAObject2*> rejected;
    QVERIFY(m_ctrl->moveItem({moved->data()}, target, rejected));
    QCOMPARE(refusing->moves, 1);
    QCOMPARE(first->moves, 1);
    QCOMPARE(second->moves, 0);

    // The manager accepting ends the dispatch before the plug-ins.
    Node* folder = m_ctrl->createFolder(QStringLiteral("Mine"), analysisBranch());
    QVERIFY(m_ctrl->moveItem({analysis(0)}, folder, rejected));
    QCOMPARE(refusing->moves, 1);
}

void tst_ProjectEditingRules::expandStopsAtFirstPlugin()
{
    auto* refusing = new CountingPlugin(m_ctrl.get(), QStringLiteral("refusing"), false);
    auto* first = new CountingPlugin(m_ctrl.get(), QStringLiteral("first"), true);
    auto* second = new CountingPlugin(m_ctrl.get(), QStringLiteral("second"), true);
    m_ctrl->addPlugin(refusing, nullptr);
    m_ctrl->addPlugin(first, nullptr);
    m_ctrl->addPlugin(second, nullptr);
    m_ctrl->fillNodeOnExpand(externalNode());
    QCOMPARE(refusing->expands, 1);
    QCOMPARE(first->expands, 1);
    QCOMPARE(second->expands, 0);
}

QTEST_MAIN(tst_ProjectEditingRules)
#include "tst_projecteditingrules.moc"
