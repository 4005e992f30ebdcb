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
    CountingPlugin(KAAbstractBrowserCtrl* ctrl, bool accept) : KAProjectBrowserPlugin(ctrl, QString()), m_accept(accept) {}
    void init() override {}
    bool refreshRequested(KAObjectType, const KAObject2*) override { return false; }
    bool fillNodeOnExpand(Node*) override { return asked(); }
    bool deleteObject(Node*, bool) override { return asked(); }
    bool renameObject(Node*, QString& name) override
    {
        if (m_accept)
            name += QLatin1Char('+');
        return asked();
    }
    bool moveItem(const QList<const KAObject2*>&, Node*, QList<const KAObject2*>&) override { return asked(); }
    KATreeWidgetItemCreatorAbstract* itemCreator() override { return nullptr; }

    int calls = 0;

private:
    bool asked()
    {
        ++calls;
        return m_accept;
    }
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
    void renameFolder_data();
    void renameFolder();
    void renameDatabaseObject();
    void deleteUserFolderWithNestedFolders();
    void refreshAfterDeletingPlacementFolder();
    void managerRefusesDelete_data();
    void managerRefusesDelete();
    void managerDeletesDatabaseObject();
    void moveRefused_data();
    void moveRefused();
    void moveFolderAndSave();
    void moveDatasetAssociates();
    void reparentRecordsParent_data();
    void reparentRecordsParent();
    void controllerReparentRefused();
    void pluginDispatch_data();
    void pluginDispatch();

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
    // A stored property's value, "<missing>" when the object has none of that key.
    QString property(const KAObject2* object, const char* key) const
    {
        bool found = false;
        const QString value = db()->getObjectProperties(object, QLatin1String(key), &found).value();
        return found ? value : QStringLiteral("<missing>");
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

void tst_ProjectEditingRules::renameFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("name");
    QTest::newRow("name of a sibling") << "Other" << "Data" << "Data_2";
    QTest::newRow("name deeper in the subtree") << "Other" << "Deep" << "Deep_1";
    QTest::newRow("its own name") << "Data" << "Data" << "Data";
}

void tst_ProjectEditingRules::renameFolder()
{
    QFETCH(QString, folder);
    QFETCH(QString, request);
    QFETCH(QString, name);
    m_ctrl->createFolder(QStringLiteral("Deep"), m_ctrl->createFolder(QStringLiteral("Data"), analysisBranch()));
    m_ctrl->createFolder(QStringLiteral("Data"), analysisBranch()); // Data_1
    m_ctrl->createFolder(QStringLiteral("Other"), analysisBranch());
    Node* node = childFolder(analysisBranch(), folder);
    QVERIFY(m_ctrl->renameObject(node, request));
    QCOMPARE(request, name);
    QCOMPARE(node->data()->name(), name);
    QVERIFY(readSavedEntries(defaultPath()).contains({"KAObject2Analysis", name, "/Analysis/" + name}));
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

void tst_ProjectEditingRules::managerRefusesDelete_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("default folder of a branch") << 0;
    QTest::newRow("external folders 2522") << 2522;
    QTest::newRow("external file 2523") << 2523;
}

void tst_ProjectEditingRules::managerRefusesDelete()
{
    QFETCH(int, type);
    Node* node = type ? externalNode(KAObjectType(type)) : analysisBranch();
    const int before = mgr()->getTree()->childCount();
    QVERIFY(type ? !mgr()->deleteObject(node, false) : !m_ctrl->deleteObject(node, false));
    QCOMPARE(node->parent(), mgr()->getTree());
    QCOMPARE(mgr()->getTree()->childCount(), before);
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

// Moves refused whole or in part, among these folders:
//   analyses: Locked (read-only), Outer/Inner, Batch, Same, Dup, Target/Below/Dup
//   wells: Plates
// and analyses a0 to a2 (a0 named with markup), the first well "well", a
// node without object "bare" and no target at all "none". Lists of names
// are separated by spaces.
void tst_ProjectEditingRules::moveRefused_data()
{
    QTest::addColumn<QString>("moved");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("log");
    QTest::addColumn<QString>("rejected");
    QTest::addColumn<QString>("movedIn");
    const QString refused = QStringLiteral("This move is not allowed");
    const QString plates = QStringLiteral("The move of <b>Plates</b> is not allowed into this folder");
    QTest::newRow("read-only target") << "a0 a1 a2" << "Locked" << false << refused << "" << "";
    QTest::newRow("target without object") << "a0 a1" << "bare" << false << refused << "" << "";
    QTest::newRow("no target") << "a1" << "none" << false << "" << "" << "";
    QTest::newRow("nothing to move") << "" << "Batch" << false << "" << "" << "";
    QTest::newRow("kind not allowed, name escaped")
        << "a0 well" << "Plates" << true
        << "The move of <b>A&amp;B &lt;i&gt;x&lt;/i&gt; &quot;q&quot;</b> is not allowed into this folder" << "a0"
        << "well";
    QTest::newRow("folder with other allowed kinds") << "Plates Same" << "Batch" << true << plates << "Plates" << "Same";
    QTest::newRow("nothing left to move") << "Plates" << "Batch" << false << plates << "Plates" << "";
    // Accepted, but the folder stays where it is.
    QTest::newRow("folder into its own subfolder") << "Outer" << "Inner" << true << "" << "" << "";
    QTest::newRow("name already in the target's subtree")
        << "Dup" << "Target" << false << "A folder with that name already exists" << "Dup" << "";
}

void tst_ProjectEditingRules::moveRefused()
{
    QFETCH(QString, moved);
    QFETCH(QString, target);
    QFETCH(bool, result);
    QFETCH(QString, log);
    QFETCH(QString, rejected);
    QFETCH(QString, movedIn);
    QVERIFY(db()->objectRename(analysis(0), QStringLiteral("A&B <i>x</i> \"q\"")));
    QHash<QString, Node*> nodes;
    const auto add = [&](const QString& name, Node* parent) { return nodes[name] = m_ctrl->createFolder(name, parent); };
    static_cast<KAObject2Folder*>(add(QStringLiteral("Locked"), analysisBranch())->data())->setReadOnly(true);
    add(QStringLiteral("Inner"), add(QStringLiteral("Outer"), analysisBranch()));
    for (const char* name : {"Batch", "Same", "Dup"})
        add(QLatin1String(name), analysisBranch());
    // Names are unique within the parent's subtree only: a second Dup deeper down.
    Node* below = add(QStringLiteral("Below"), add(QStringLiteral("Target"), analysisBranch()));
    QCOMPARE(m_ctrl->createFolder(QStringLiteral("Dup"), below)->data()->name(), QStringLiteral("Dup"));
    add(QStringLiteral("Plates"), mgr()->getTree(KAObjectTypeWell));
    if (target == QLatin1String("bare"))
        nodes[target] = new Node(analysisBranch(), -1);
    for (int i = 0; i < 3; ++i)
        nodes[QStringLiteral("a%1").arg(i)] = nodeOf(mgr()->getTree(), analysis(i));
    nodes[QStringLiteral("well")] = nodeOf(mgr()->getTree(), db()->getObjectLst(KAObjectTypeWell).first());
    const auto objectsOf = [&nodes](const QString& keys) {
        QList<const KAObject2*> objects;
        for (const QString& key : keys.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            objects.append(nodes.value(key)->data());
        return objects;
    };
    const QStringList movedKeys = moved.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QHash<QString, Node*> parents;
    for (const QString& key : movedKeys)
        parents[key] = nodes.value(key)->parent();
    QFile::remove(defaultPath());
    MessageLoggerInterface::returnMe()->clear();

    QList<const KAObject2*> refusedObjects;
    QCOMPARE(m_ctrl->moveItem(objectsOf(moved), nodes.value(target), refusedObjects), result);
    QCOMPARE(logTexts().join(QLatin1Char('\n')), log);
    for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries())
        QCOMPARE(int(entry.level), int(MessageLoggerInterface::LevelError));
    QCOMPARE(refusedObjects, objectsOf(rejected));
    for (const QString& key : movedKeys)
        QCOMPARE(nodeOf(mgr()->getTree(), nodes.value(key)->data())->parent(),
                 movedIn.split(QLatin1Char(' ')).contains(key) ? nodes.value(target) : parents.value(key));
    // A move that went through is saved, even when nothing changed place.
    if (result)
        QVERIFY(readSavedEntries(defaultPath()).contains({"KAObject2Analysis", "Inner", "/Analysis/Outer/Inner"}));
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
}

void tst_ProjectEditingRules::moveDatasetAssociates()
{
    Node* folder = m_ctrl->createFolder(QStringLiteral("Associated"), analysisBranch());
    static_cast<KAObject2Folder*>(folder->data())->addAllowedVisualReparentType(KAObjectTypeDataset);
    const KAObject2* dataset = payloadsOfType(mgr()->getTree(KAObjectTypeWell), KAObjectTypeDataset).first();
    QList<const KAObject2*> rejected;
    // Associated, not moved: nothing is left on the list of nodes to move.
    QVERIFY(!m_ctrl->moveItem({dataset}, folder, rejected));
    QCOMPARE(property(dataset, "parent"), QStringLiteral("260"));
    QCOMPARE(property(dataset, "parentID"), QStringLiteral("Associated"));
    QCOMPARE(logTexts(), QStringList{QStringLiteral("Object %1 was successfully associated to object Associated")
                                         .arg(dataset->name())});

    // Without kind 4 among the folder's kinds, a dataset is skipped silently.
    MessageLoggerInterface::returnMe()->clear();
    Node* plain = m_ctrl->createFolder(QStringLiteral("Plain"), analysisBranch());
    QVERIFY(!m_ctrl->moveItem({dataset}, plain, rejected));
    QCOMPARE(logTexts(), QStringList());
    QVERIFY(rejected.isEmpty());
    QCOMPARE(property(dataset, "parentID"), QStringLiteral("Associated"));
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
    QCOMPARE(property(object, "parent"), QStringLiteral("1"));
    const TProperty parent = db()->getObjectProperties(object, QStringLiteral("parent"), nullptr);
    QVERIFY(parent.unit().isEmpty());
    QVERIFY(parent.comment().isEmpty());
    QCOMPARE(property(object, "parentID"), newParent->name());
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
    QCOMPARE(property(reread, "parent"), QStringLiteral("1"));
    QCOMPARE(property(reread, "parentID"), parentName);
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

// The plug-ins are asked in the order they were added, after the manager.
void tst_ProjectEditingRules::pluginDispatch_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("accepts"); // a plug-in a character: + accepts, - refuses
    QTest::addColumn<QList<int>>("calls");
    QTest::newRow("rename asks every plug-in") << "rename" << "+-+" << QList<int>{1, 1, 1};
    QTest::newRow("delete stops at the first to accept") << "delete" << "-++" << QList<int>{1, 1, 0};
    QTest::newRow("move stops at the first to accept") << "move" << "-++" << QList<int>{1, 1, 0};
    QTest::newRow("expand stops at the first to accept") << "expand" << "-++" << QList<int>{1, 1, 0};
}

void tst_ProjectEditingRules::pluginDispatch()
{
    QFETCH(QString, operation);
    QFETCH(QString, accepts);
    QFETCH(QList<int>, calls);
    QList<CountingPlugin*> plugins;
    for (QChar accept : accepts) {
        plugins.append(new CountingPlugin(m_ctrl.get(), accept == QLatin1Char('+')));
        m_ctrl->addPlugin(plugins.last(), nullptr);
    }
    const auto asked = [&plugins] {
        QList<int> counts;
        for (const CountingPlugin* plugin : plugins)
            counts.append(plugin->calls);
        return counts;
    };
    Node* node = externalNode();
    const int before = mgr()->getTree()->childCount();
    QString name = QStringLiteral("New");
    QList<const KAObject2*> rejected;
    if (operation == QLatin1String("rename")) {
        QVERIFY(m_ctrl->renameObject(node, name));
        QCOMPARE(name, QStringLiteral("New++"));
    } else if (operation == QLatin1String("delete")) {
        QVERIFY(m_ctrl->deleteObject(node, true));
        QCOMPARE(mgr()->getTree()->childCount(), before - 1);
    } else if (operation == QLatin1String("move")) {
        QVERIFY(m_ctrl->moveItem({externalNode(KAObjectTypeExternalFile)->data()}, node, rejected));
    } else {
        m_ctrl->fillNodeOnExpand(node);
    }
    QCOMPARE(asked(), calls);
    if (operation == QLatin1String("expand"))
        return;

    // The manager accepting ends the dispatch before the plug-ins.
    Node* folder = m_ctrl->createFolder(QStringLiteral("Mine"), analysisBranch());
    name = QStringLiteral("Yours");
    if (operation == QLatin1String("rename"))
        QVERIFY(m_ctrl->renameObject(folder, name));
    else if (operation == QLatin1String("delete"))
        QVERIFY(m_ctrl->deleteObject(folder, false));
    else
        QVERIFY(m_ctrl->moveItem({analysis(0)}, folder, rejected));
    QCOMPARE(asked(), calls);
}

QTEST_MAIN(tst_ProjectEditingRules)
#include "tst_projecteditingrules.moc"
