#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2analysis.h"
#include "kaobject2fake.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "rvfilesystembrowserctrl.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "ttree.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;
using TreeTest::childNames;
using TreeTest::childNamed;
using TechDB::TDatabase;

// "Project: analysis: detection, detection; analysis: ..." for comparing a
// whole content tree at once.
QString describe(const Node* root)
{
    QStringList analyses;
    for (const Node* a = root->firstChild(); a; a = a->nextSibling())
        analyses.append(a->data()->name() + QStringLiteral(": ") + childNames(a).join(QStringLiteral(", ")));
    return root->data()->name() + QStringLiteral(" | ") + analyses.join(QStringLiteral("; "));
}

// The content of a batch, collected once as the variant collects it.
struct Content {
    explicit Content(const QList<const KAObject2Project*>& projects)
        : batch(projects)
    {
        ctrl.getProjectsContent(batch, analyses, peakDetects);
    }
    QMap<const KAObject2Project*, Node*> trees() { return ctrl.createTreeView(batch, analyses, peakDetects); }

    RVFileSystemBrowserCtrl ctrl{QString()};
    QList<const KAObject2Project*> batch;
    RVFileSystemBrowserCtrl::AnalysisMap analyses;
    RVFileSystemBrowserCtrl::PeakDetectMap peakDetects;
};

// Writes a project by hand. analyses: name -> detection names (one signal
// each); compounds: name -> detection names, where "Other/name" names a
// detection of the project already written under "Other".
struct ProjectLayout {
    QString folder;
    QList<QPair<QString, QStringList>> analyses;
    QList<QPair<QString, QStringList>> compounds;
};

class Workspace
{
public:
    bool write(const QString& root, const ProjectLayout& layout)
    {
        const QString folder = QDir(root).filePath(layout.folder);
        QString error;
        if (!TDatabase::createProject(folder, layout.folder, &error))
            return fail(error);
        KAObject2Project project(layout.folder, folder);
        std::unique_ptr<TDatabase> db(TDatabase::open(&project, false, &error));
        if (!db || !db->beginBatch())
            return fail(db ? db->lastError() : error);
        QHash<QString, qint64>& ids = m_detections[layout.folder];
        for (const auto& analysis : layout.analyses) {
            const qint64 a = db->addObject(KAObjectTypeAnalysis, 0, analysis.first);
            const qint64 s = db->addObject(KAObjectTypeSignal, a, QStringLiteral("FID"));
            for (const QString& pd : analysis.second)
                ids.insert(pd, db->addObject(KAObjectTypePeakDetect, s, pd, 0x1));
        }
        const qint64 list = db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("Targets"));
        for (const auto& compound : layout.compounds) {
            const qint64 c = db->addObject(KAObjectTypeCompound, list, compound.first);
            for (const QString& entry : compound.second) {
                const int slash = entry.indexOf(QLatin1Char('/'));
                const bool ok = slash < 0
                    ? db->addCompoundPeakDetect(c, ids.value(entry))
                    : db->addCompoundPeakDetect(c, m_detections.value(entry.left(slash)).value(entry.mid(slash + 1)),
                                                QDir(root).filePath(entry.left(slash)));
                if (!ok)
                    return fail(db->lastError());
            }
        }
        return db->commitBatch() || fail(db->lastError());
    }

private:
    static bool fail(const QString& error)
    {
        qWarning("%s", qPrintable(error));
        return false;
    }
    QHash<QString, QHash<QString, qint64>> m_detections;
};

} // namespace

// The project-content variant: what the compounds of a batch of projects
// lead to, and how it fills the file-system tree.
class tst_RVFileSystemBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void contentOfBatch();
    void contentTreesFollowMapOrder();
    void onlyWorkDetectionsGiveNoTree();
    void entriesIntoProjectsOutsideTheBatchAreSkipped();
    void folderListingFillsEveryProject();
    void placeholderProjectNodeIsFilled();
    void closedProjectsAreOpenedToBeRead();

private:
    const KAObject2Project* project(const QString& folder) const;
    QList<const KAObject2Project*> projects(const QStringList& folders) const;

    std::unique_ptr<TestFixture> m_fixture;
};

void tst_RVFileSystemBrowserCtrl::initTestCase()
{
    kaInitTestEnvironment();
}

// Alpha: its compounds share "b" and one holds only a work detection.
// Beta: its compound also names "a" and "e" of Alpha; "e" belongs to an
// analysis of Alpha that no compound of Alpha leads to.
// Gamma: a compound with only a work detection and one with nothing.
void tst_RVFileSystemBrowserCtrl::init()
{
    m_fixture.reset(new TestFixture);
    Workspace ws;
    const QString root = m_fixture->path();
    QVERIFY(ws.write(root, {QStringLiteral("Alpha"),
                            {{QStringLiteral("A1"), {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("tempPD_1")}},
                             {QStringLiteral("A2"), {QStringLiteral("c")}},
                             {QStringLiteral("A3"), {QStringLiteral("e")}}},
                            {{QStringLiteral("C1"), {QStringLiteral("a"), QStringLiteral("b")}},
                             {QStringLiteral("C2"), {QStringLiteral("b"), QStringLiteral("c")}},
                             {QStringLiteral("C3"), {QStringLiteral("tempPD_1")}}}}));
    QVERIFY(ws.write(root, {QStringLiteral("Beta"),
                            {{QStringLiteral("B1"), {QStringLiteral("d")}}},
                            {{QStringLiteral("C4"), {QStringLiteral("d"), QStringLiteral("Alpha/a"), QStringLiteral("Alpha/e")}}}}));
    QVERIFY(ws.write(root, {QStringLiteral("Gamma"),
                            {{QStringLiteral("G1"), {QStringLiteral("tempPD_9"), QStringLiteral("g")}}},
                            {{QStringLiteral("C5"), {QStringLiteral("tempPD_9")}}, {QStringLiteral("C6"), {}}}}));
    QVERIFY(QDir(root).mkdir(QStringLiteral("Notes")));
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({root});
}

void tst_RVFileSystemBrowserCtrl::cleanup()
{
    ProjectMgrInterface::returnMe()->closeAll();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
    m_fixture.reset();
}

const KAObject2Project* tst_RVFileSystemBrowserCtrl::project(const QString& folder) const
{
    return ProjectMgrInterface::returnMe()->findProject(m_fixture->filePath(folder));
}

QList<const KAObject2Project*> tst_RVFileSystemBrowserCtrl::projects(const QStringList& folders) const
{
    QList<const KAObject2Project*> list;
    for (const QString& folder : folders)
        list.append(project(folder));
    return list;
}

void tst_RVFileSystemBrowserCtrl::contentOfBatch()
{
    Content content(projects({QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Gamma")}));
    const QList<const KAObject2Project*>& batch = content.batch;
    const RVFileSystemBrowserCtrl::AnalysisMap& analyses = content.analyses;
    const RVFileSystemBrowserCtrl::PeakDetectMap& peakDetects = content.peakDetects;

    // Alpha's analyses in the order the compounds reach them; A3 only
    // through Beta's compound, yet under Alpha.
    QStringList names;
    for (const KAObject2Analysis* a : analyses.value(batch.at(0)))
        names.append(a->name());
    QCOMPARE(names, QStringList({QStringLiteral("A1"), QStringLiteral("A2"), QStringLiteral("A3")}));
    QCOMPARE(analyses.value(batch.at(1)).size(), 1);
    QVERIFY(!analyses.contains(batch.at(2)));
    QCOMPARE(analyses.size(), 2);

    // "b" (two compounds) and "a" (two projects' compounds) once each; the
    // work detection never.
    const KAObject2Analysis* a1 = analyses.value(batch.at(0)).first();
    QStringList detections;
    for (const KAObject2PeakDetect* pd : peakDetects.value(a1))
        detections.append(pd->name());
    QCOMPARE(detections, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    for (auto it = peakDetects.cbegin(); it != peakDetects.cend(); ++it) {
        for (const KAObject2PeakDetect* pd : it.value())
            QVERIFY2(!pd->name().startsWith(QLatin1String("tempPD_")), qPrintable(pd->name()));
    }
}

void tst_RVFileSystemBrowserCtrl::contentTreesFollowMapOrder()
{
    Content content(projects({QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Gamma")}));
    const QList<const KAObject2Project*>& batch = content.batch;
    const QMap<const KAObject2Project*, Node*> trees = content.trees();
    QCOMPARE(trees.size(), 2);
    std::unique_ptr<Node> alpha(trees.value(batch.at(0)));
    std::unique_ptr<Node> beta(trees.value(batch.at(1)));
    QVERIFY(alpha && beta);
    QCOMPARE(describe(alpha.get()), QStringLiteral("Alpha | A1: a, b; A2: c; A3: e"));
    QCOMPARE(describe(beta.get()), QStringLiteral("Beta | B1: d"));
    // The nodes only point at the database's objects.
    QVERIFY(!alpha->ownsData());
    QVERIFY(!alpha->firstChild()->ownsData());
    QVERIFY(!alpha->firstChild()->firstChild()->ownsData());
}

void tst_RVFileSystemBrowserCtrl::onlyWorkDetectionsGiveNoTree()
{
    Content content(projects({QStringLiteral("Gamma")}));
    QVERIFY(content.analyses.isEmpty());
    QVERIFY(content.peakDetects.isEmpty());
    QVERIFY(content.trees().isEmpty());
}

// Outside the batch, Alpha stays closed: Beta's entries into it lead
// nowhere, and nothing of Alpha appears.
void tst_RVFileSystemBrowserCtrl::entriesIntoProjectsOutsideTheBatchAreSkipped()
{
    Content content(projects({QStringLiteral("Beta")}));
    QCOMPARE(content.analyses.size(), 1);
    QCOMPARE(content.peakDetects.size(), 1);
    const QMap<const KAObject2Project*, Node*> trees = content.trees();
    QCOMPARE(trees.size(), 1);
    std::unique_ptr<Node> tree(trees.first());
    QCOMPARE(describe(tree.get()), QStringLiteral("Beta | B1: d"));
}

void tst_RVFileSystemBrowserCtrl::folderListingFillsEveryProject()
{
    KAFileSystemBrowserFilterPackage filter;
    filter.setRootForced(m_fixture->path());
    RVFileSystemBrowserCtrl ctrl{QString()};
    ctrl.init(&filter, nullptr, false);
    const Node* root = ctrl.getTree() ? ctrl.getTree()->firstChild() : nullptr;
    QVERIFY(root);
    QStringList names = childNames(root);
    names.sort();
    QCOMPARE(names, QStringList({QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Gamma"),
                                 QStringLiteral("Notes")}));
    // One batch: Beta's compound reaches into Alpha, so A3 is there.
    const Node* alpha = childNamed(root, QStringLiteral("Alpha"));
    QCOMPARE(alpha->data()->type(), KAObjectTypeProject);
    QStringList analyses = childNames(alpha);
    analyses.sort();
    QCOMPARE(analyses, QStringList({QStringLiteral("A1"), QStringLiteral("A2"), QStringLiteral("A3")}));
    QCOMPARE(childNames(childNamed(root, QStringLiteral("Beta"))), QStringList({QStringLiteral("B1")}));
    QCOMPARE(childNamed(root, QStringLiteral("Gamma"))->childCount(), 0);
    // Other folders are listed as the plain explorer lists them.
    const Node* notes = childNamed(root, QStringLiteral("Notes"));
    QCOMPARE(notes->data()->type(), KAObjectTypeWinFolder);
    QCOMPARE(notes->childCount(), 1);
    QCOMPARE(notes->firstChild()->data()->type(), KAObjectTypeFake);

    // Closed by the host, a project folds back to a placeholder: nothing
    // is left pointing into its database, and expanding reads it again.
    Node* alphaNode = childNamed(root, QStringLiteral("Alpha"));
    QVERIFY(ProjectMgrInterface::returnMe()->closeProject(project(QStringLiteral("Alpha"))));
    QCOMPARE(alphaNode->childCount(), 1);
    QCOMPARE(alphaNode->firstChild()->data()->type(), KAObjectTypeFake);
    QCOMPARE(childNames(childNamed(root, QStringLiteral("Beta"))), QStringList({QStringLiteral("B1")}));
    static_cast<KAAbstractBrowserCtrl&>(ctrl).fillNodeOnExpand(alphaNode);
    analyses = childNames(alphaNode);
    analyses.sort();
    QCOMPARE(analyses, QStringList({QStringLiteral("A1"), QStringLiteral("A2")}));
}

void tst_RVFileSystemBrowserCtrl::placeholderProjectNodeIsFilled()
{
    RVFileSystemBrowserCtrl ctrl{QString()};
    Node node;
    node.setData(const_cast<KAObject2Project*>(project(QStringLiteral("Alpha"))));
    auto* placeholder = new Node(&node, -1);
    placeholder->setData(new KAObject2Fake(KAObjectTypeProject));
    placeholder->setOwnsData(true);

    static_cast<KAAbstractBrowserCtrl&>(ctrl).fillTree(&node);
    QCOMPARE(childNames(&node), QStringList({QStringLiteral("A1"), QStringLiteral("A2")}));
    QCOMPARE(childNames(childNamed(&node, QStringLiteral("A1"))), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(!node.firstChild()->ownsData());

    // Filled once: a second call finds no placeholder and changes nothing.
    static_cast<KAAbstractBrowserCtrl&>(ctrl).fillTree(&node);
    QCOMPARE(node.childCount(), 2);
}

void tst_RVFileSystemBrowserCtrl::closedProjectsAreOpenedToBeRead()
{
    const QList<const KAObject2Project*> batch = projects({QStringLiteral("Alpha"), QStringLiteral("Beta")});
    QVERIFY(!batch.at(0)->db() && !batch.at(1)->db());
    Content content(batch);
    QVERIFY(batch.at(0)->db() && batch.at(1)->db());
    // Opened silently: the current project stays as it was.
    QCOMPARE(ProjectMgrInterface::returnMe()->currentProject(), nullptr);
}

QTEST_MAIN(tst_RVFileSystemBrowserCtrl)
#include "tst_rvfilesystembrowserctrl.moc"
