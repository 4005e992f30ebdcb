#include "applicationinterface.h"
#include "kaobject2analysis.h"
#include "kaobject2folder.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserplugin.h"
#include "messageloggerinterface.h"
#include "projecttreehelpers.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace TreeTest;

Q_DECLARE_METATYPE(const KAObject2*)

namespace {

// A plug-in that writes its letter on a shared trail whenever the controller
// asks it something, and accepts (marking the names it renames) or refuses.
class TrailPlugin : public KAProjectBrowserPlugin
{
public:
    TrailPlugin(KAAbstractBrowserCtrl* ctrl, QChar letter, bool accept, QString* trail)
        : KAProjectBrowserPlugin(ctrl, QString()), m_letter(letter), m_accept(accept), m_trail(trail) {}
    void init() override {}
    bool refreshRequested(KAObjectType, const KAObject2*) override { return false; }
    bool fillNodeOnExpand(Node*) override { return asked(); }
    bool deleteObject(Node*, bool) override { return asked(); }
    bool renameObject(Node*, QString& name) override { name += m_accept ? "+" : ""; return asked(); }
    bool moveItem(const QList<const KAObject2*>&, Node*, QList<const KAObject2*>&) override { return asked(); }
    KATreeWidgetItemCreatorAbstract* itemCreator() override { return nullptr; }

private:
    bool asked() { *m_trail += m_letter; return m_accept; }
    QChar m_letter;
    bool m_accept;
    QString* m_trail;
};

QStringList logTexts() { return MessageLoggerInterface::returnMe()->texts(); }

} // namespace

// The editing rules of the project explorer on a generated project, through
// the view-less controller: folders, rename, delete, move, reparent and the
// dispatch to the plug-ins.
class tst_ProjectEditingRules : public QObject
{
    Q_OBJECT

    KAProjectBrowserMgr* mgr() const { return m_ctrl->mgrList().first(); }
    TechDB::TDatabase* db() const { return m_project->db(); }
    Node* branch(KAObjectType type = KAObjectTypeAnalysis) const { return mgr()->getTree(type); }
    const KAObject2* analysis(int i) const { return db()->getObjectLst(KAObjectTypeAnalysis).at(i); }
    Node* nodeOf(const KAObject2* object) const { return TreeTest::nodeOf(mgr()->getTree(), object); }
    Node* folder(const QString& name, Node* parent) { return m_ctrl->createFolder(name, parent); }
    QString renamed(Node* node, QString name) { return m_ctrl->renameObject(node, name) ? name : "<refused>"; }
    bool saved(const SavedEntry& entry) const { return readSavedEntries(mgr()->savedTreePath()).contains(entry); }
    QString property(qint64 id, const QString& key) const
    {
        return db()->getObjectProperties(db()->objectById(id), key, nullptr).value();
    }
    void build()
    {
        m_ctrl.reset(new KAProjectBrowserCtrl);
        m_ctrl->init(&m_filter, m_project, true);
        QVERIFY(branch());
    }
    // A node of a plug-in's kind under the project root.
    Node* foreignNode(KAObjectType type = KAObjectTypeExternalFolders)
    {
        auto* node = new Node(mgr()->getTree(), -1);
        node->setData(new KAObject2(type, QStringLiteral("External <data>")));
        node->setOwnsData(true);
        return node;
    }

    std::unique_ptr<TestFixture> m_fixture;
    KAProjectBrowserFilterPackage m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
    QList<const KAObject2*> m_rejected;

private slots:
    void initTestCase() { kaInitTestEnvironment(); qRegisterMetaType<const KAObject2*>(); }
    void init()
    {
        m_fixture.reset(new TestFixture);
        QVERIFY((m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"))));
        build();
        m_rejected.clear();
        MessageLoggerInterface::returnMe()->clear();
    }
    void cleanup() { m_ctrl.reset(); m_fixture.reset(); }

    // Unique among the parent's subtree, the first free number appended,
    // case kept apart; a rename follows the same rule.
    void folderNamesAreUnique()
    {
        QStringList made;
        for (const char* request : {"Data", "Data_2", "Data", "Data", "Data_1", "data"})
            made.append(folder(request, branch())->data()->name());
        QCOMPARE(made, (QStringList{"Data", "Data_2", "Data_1", "Data_3", "Data_1_1", "data"}));
        QVERIFY(!folder(QStringLiteral("Orphan"), nullptr));
        folder("Deep", childFolder(branch(), "Data"));
        Node* other = folder("Other", branch());
        QCOMPARE(renamed(other, "Deep"), QStringLiteral("Deep_1"));
        QCOMPARE(renamed(other, "Data"), QStringLiteral("Data_4"));
        QCOMPARE(renamed(other, "Data_4"), QStringLiteral("Data_4"));
        const QString layout = QDir(m_project->folder()).filePath("Settings/default.projectbrowser.xml");
        QVERIFY(readSavedEntries(layout).contains({"KAObject2Analysis", "Data_4", "/Analysis/Data_4"}));
        // A folder accepts the kinds of the folder it is made in, nested too.
        Node* inner = folder("Inner", folder("Outer", branch(KAObjectTypeGlobalIndexation)));
        QCOMPARE(inner->data()->getAllowedVisualReparentType(),
                 (QList<KAObjectType>{KAObjectTypeGlobalIndexation, KAObjectTypeIdentificationGroup}));
    }

    // Written to the database; the saved layout follows the new name.
    void renameDatabaseObject()
    {
        const qint64 id = analysis(0)->id();
        QVERIFY(m_ctrl->moveItem({analysis(0)}, folder("Kept", branch()), m_rejected));
        const QString name = QStringLiteral("Renamed « été » & co");
        QCOMPARE(renamed(nodeOf(analysis(0)), name), name);
        QCOMPARE(static_cast<const KAObject2*>(db()->getAnalysis(name)), db()->objectById(id));
        m_ctrl.reset();
        QVERIFY(TestFixture::reopen(m_project));
        build();
        QCOMPARE(folderChain(nodeOf(db()->objectById(id))), QStringLiteral("/Analysis/Kept"));
        QCOMPARE(renamed(nodeOf(db()->objectById(id)), "  "), QStringLiteral("<refused>"));
        QCOMPARE(db()->objectById(id)->name(), name);
    }

    // A user folder goes with its subfolders and leaves its objects in the
    // database, rebuilt into their branch; a database object goes for good; a
    // default branch folder and the plug-ins' kinds are refused before the
    // database is asked (it would report a foreign object).
    void deleteRules()
    {
        const KAObject2* indexation = db()->getObjectLst(KAObjectTypeGlobalIndexation).first();
        const int count = db()->getObjectLst(KAObjectTypeGlobalIndexation).size();
        const int wells = db()->getObjectLst(KAObjectTypeWell).size();
        Node* sub = folder("Sub 1", folder("Kovats", branch(KAObjectTypeGlobalIndexation)));
        folder("Deep", sub);
        QVERIFY(m_ctrl->moveItem({indexation}, sub, m_rejected));
        build(); // the old controller saves; the indexation is placed from the saved layout
        QVERIFY(m_ctrl->deleteObject(childFolder(branch(KAObjectTypeGlobalIndexation), "Kovats"), false));
        QCOMPARE(nodesOfType(branch(KAObjectTypeGlobalIndexation), KAObjectTypeFolder).size(), 1);
        m_ctrl->refreshRequested(KAObjectTypeGlobalIndexation, nullptr);
        QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeGlobalIndexation).size(), count);
        QCOMPARE(nodeOf(indexation)->parent(), branch(KAObjectTypeGlobalIndexation));
        QVERIFY(mgr()->deleteObject(nodeOf(db()->getObjectLst(KAObjectTypeWell).first()), false));
        QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeWell).size(), wells - 1);
        for (Node* node : {branch(), foreignNode(KAObjectTypeExternalFolders), foreignNode(KAObjectTypeExternalFile)}) {
            const int before = mgr()->getTree()->childCount();
            QVERIFY(node == branch() ? !m_ctrl->deleteObject(node, false) : !mgr()->deleteObject(node, false));
            QCOMPARE(node->parent(), mgr()->getTree());
            QCOMPARE(mgr()->getTree()->childCount(), before);
        }
        QCOMPARE(logTexts(), QStringList());
        m_ctrl.reset();
        QVERIFY(TestFixture::reopen(m_project));
        QCOMPARE(db()->getObjectLst(KAObjectTypeGlobalIndexation).size(), count);
        QCOMPARE(db()->getObjectLst(KAObjectTypeWell).size(), wells - 1);
        build(); // the deleted folder is not brought back by the saved layout
        QCOMPARE(nodesOfType(branch(KAObjectTypeGlobalIndexation), KAObjectTypeFolder).size(), 1);
    }

    // Each refusal logs its message at error level and leaves the refused
    // objects where they were; what is allowed still moves and is saved.
    void moveRules()
    {
        const auto move = [this](QList<const KAObject2*> objects, Node* target, bool result, const QString& log,
                                 QList<const KAObject2*> rejected) {
            MessageLoggerInterface::returnMe()->clear();
            m_rejected.clear();
            QCOMPARE(m_ctrl->moveItem(objects, target, m_rejected), result);
            QCOMPARE(logTexts().join(QLatin1Char('\n')), log);
            for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries())
                QCOMPARE(entry.level, MessageLoggerInterface::LevelError);
            QCOMPARE(m_rejected, rejected);
        };
        const KAObject2* a0 = analysis(0);
        const KAObject2* a1 = analysis(1);
        const KAObject2* well = db()->getObjectLst(KAObjectTypeWell).first();
        QVERIFY(db()->objectRename(a0, QStringLiteral("A&B <i>x</i> \"q\"")));
        Node* locked = folder("Locked", branch());
        static_cast<KAObject2Folder*>(locked->data())->setReadOnly(true);
        Node* outer = folder("Outer", branch());
        Node* inner = folder("Inner", outer);
        Node* batch = folder("Batch", branch());
        Node* dup = folder("Dup", branch());
        // Names are unique within the parent's subtree only: a second Dup deeper down.
        Node* target = folder("Target", branch());
        QCOMPARE(folder("Dup", folder("Below", target))->data()->name(), QStringLiteral("Dup"));
        Node* plates = folder("Plates", branch(KAObjectTypeWell));
        const QString refused = QStringLiteral("This move is not allowed");
        move({a0, a1}, locked, false, refused, {});
        move({a0, a1}, new Node(branch(), -1), false, refused, {});
        move({a1}, nullptr, false, "", {});
        move({}, batch, false, "", {});
        move({a0, well}, plates, true,
             "The move of <b>A&amp;B &lt;i&gt;x&lt;/i&gt; &quot;q&quot;</b> is not allowed into this folder", {a0});
        QCOMPARE((QList<Node*>{nodeOf(a0)->parent(), nodeOf(well)->parent()}), (QList<Node*>{branch(), plates}));
        const QString platesRefused = QStringLiteral("The move of <b>Plates</b> is not allowed into this folder");
        move({plates->data()}, batch, false, platesRefused, {plates->data()});
        move({plates->data(), a1}, batch, true, platesRefused, {plates->data()});
        QCOMPARE(nodeOf(a1)->parent(), batch);
        QCOMPARE(plates->parent(), branch(KAObjectTypeWell));
        move({dup->data()}, target, false, "A folder with that name already exists", {dup->data()});
        QCOMPARE(dup->parent(), branch());
        // Accepted, but a folder never goes into its own subfolder; the tree is saved all the same.
        QFile::remove(mgr()->savedTreePath());
        move({outer->data()}, inner, true, "", {});
        QCOMPARE(outer->parent(), branch());
        QVERIFY(saved({"KAObject2Analysis", "Inner", "/Analysis/Outer/Inner"}));
        // Reparented directly, never into its own subtree nor onto itself.
        MessageLoggerInterface::returnMe()->clear();
        m_ctrl->reparentItem(outer, inner);
        m_ctrl->reparentItem(outer, outer);
        QCOMPARE(logTexts(), (QStringList{"Moving item failed", "Moving item failed"}));
        QCOMPARE(MessageLoggerInterface::returnMe()->entries().first().level, MessageLoggerInterface::LevelInformation);
        // A folder moves with its content.
        move({outer->data()}, batch, true, "", {});
        QVERIFY(saved({"KAObject2Analysis", "Inner", "/Analysis/Batch/Outer/Inner"}));
    }

    // The two properties written, the message, the objects notified; the
    // tree itself is not rearranged.
    void associate_data()
    {
        QTest::addColumn<bool>("signal"); // a signal of analysis 0, or the first dataset of a well
        QTest::addColumn<bool>("toFolder"); // dropped on a folder taking datasets, or reparented to analysis 2
        QTest::newRow("dataset dropped on a folder") << false << true;
        QTest::newRow("dataset of a well to an analysis") << false << false;
        QTest::newRow("signal of an analysis to another analysis") << true << false;
    }
    void associate()
    {
        QFETCH(bool, signal);
        QFETCH(bool, toFolder);
        const KAObject2* object = signal ? db()->getObjectVisualChildren(KAObjectTypeSignal, analysis(0)).first()
                                         : payloadsOfType(branch(KAObjectTypeWell), KAObjectTypeDataset).first();
        Node* node = nodeOf(object);
        const KAObject2* oldParent = node->parent()->data();
        Node* target = toFolder ? folder("Associated", branch()) : nodeOf(analysis(2));
        const qint64 id = object->id();
        const QString parentName = target->data()->name();
        QSignalSpy changed(ApplicationInterface::returnMe(), &ApplicationInterface::refreshObject);
        if (toFolder) {
            // Without kind 4 among the folder's kinds, a dataset is skipped silently.
            QVERIFY(!m_ctrl->moveItem({object}, target, m_rejected));
            QCOMPARE(logTexts(), QStringList());
            static_cast<KAObject2Folder*>(target->data())->addAllowedVisualReparentType(KAObjectTypeDataset);
            // Associated, not moved: nothing is left on the list of nodes to move.
            QVERIFY(!m_ctrl->moveItem({object}, target, m_rejected));
            QVERIFY(m_rejected.isEmpty());
        } else {
            QVERIFY(mgr()->reparentItem(node, target));
        }
        QCOMPARE(logTexts(), QStringList{QStringLiteral("Object %1 was successfully associated to object %2")
                                             .arg(object->name().toHtmlEscaped(), parentName.toHtmlEscaped())});
        QCOMPARE(MessageLoggerInterface::returnMe()->entries().first().level, MessageLoggerInterface::LevelInformation);
        QList<const KAObject2*> notified;
        for (const QList<QVariant>& args : qAsConst(changed))
            notified.append(args.first().value<const KAObject2*>());
        QCOMPARE(notified, signal ? (QList<const KAObject2*>{oldParent, object, target->data()})
                                  : (QList<const KAObject2*>{object, target->data()}));
        QCOMPARE(node->parent()->data(), oldParent);
        m_ctrl.reset();
        QVERIFY(TestFixture::reopen(m_project));
        QCOMPARE(property(id, "parent"), toFolder ? QStringLiteral("260") : QStringLiteral("1"));
        QCOMPARE(property(id, "parentID"), parentName);
    }

    // The manager first; then the plug-ins in the order they were added.
    void pluginDispatch_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("accepts"); // a plug-in a character: + accepts, - refuses
        QTest::addColumn<QString>("asked");
        QTest::newRow("rename asks every plug-in") << "rename" << "+-+" << "abc";
        for (const char* operation : {"delete", "move", "expand"})
            QTest::addRow("%s stops at the first to accept", operation) << operation << "-++" << "ab";
    }
    void pluginDispatch()
    {
        QFETCH(QString, operation);
        QFETCH(QString, accepts);
        QFETCH(QString, asked);
        QString trail;
        for (int i = 0; i < accepts.size(); ++i)
            m_ctrl->addPlugin(new TrailPlugin(m_ctrl.get(), QChar('a' + i), accepts.at(i) == '+', &trail), nullptr);
        // A plug-in's node first, then a user folder: the manager takes it and no plug-in is asked.
        for (Node* node : {foreignNode(), folder("Mine", branch())}) {
            const bool plugin = node->data()->type() != KAObjectTypeFolder;
            const int before = mgr()->getTree()->childCount();
            if (operation == QLatin1String("rename")) {
                QCOMPARE(renamed(node, "New"), plugin ? QStringLiteral("New++") : QStringLiteral("New"));
            } else if (operation == QLatin1String("delete")) {
                QVERIFY(m_ctrl->deleteObject(node, plugin));
                QCOMPARE(mgr()->getTree()->childCount(), before - (plugin ? 1 : 0));
            } else if (operation == QLatin1String("move")) {
                const KAObject2* moved = plugin ? foreignNode(KAObjectTypeExternalFile)->data() : analysis(0);
                QVERIFY(m_ctrl->moveItem({moved}, node, m_rejected));
            } else if (plugin) {
                m_ctrl->fillNodeOnExpand(node);
            }
            QCOMPARE(trail, asked);
        }
    }
};

QTEST_MAIN(tst_ProjectEditingRules)
#include "tst_projecteditingrules.moc"
