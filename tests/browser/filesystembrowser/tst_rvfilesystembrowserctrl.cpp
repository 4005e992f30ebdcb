#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2project.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "rvfilesystembrowserctrl.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QDir>
#include <QTest>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;
using namespace TreeTest;
using TechDB::TDatabase;
using Layout = QList<QPair<QString, QStringList>>;

// "Project | analysis: detection, detection; analysis: ...": a whole tree.
QString describe(const Node* root)
{
    QStringList analyses;
    for (const Node* a = root->firstChild(); a; a = a->nextSibling())
        analyses.append(a->data()->name() + ": " + childNames(a).join(", "));
    return root->data()->name() + " | " + analyses.join("; ");
}

} // namespace

// The project-content variant: what compounds lead to, filling the tree.
class tst_RVFileSystemBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup()
    {
        ProjectMgrInterface::returnMe()->closeAll();
        ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
        m_fixture.reset();
    }
    void folderListingFillsEveryProjectInOneBatch();

private:
    const KAObject2Project* project(const QString& name) const
    {
        return ProjectMgrInterface::returnMe()->findProject(m_fixture->filePath(name));
    }
    std::unique_ptr<TestFixture> m_fixture;
};

// Alpha: its compounds share "b" and one holds only a work detection.
// Beta: its compound also names "a" and "e" of Alpha; "e" belongs to an
// analysis of Alpha that no compound of Alpha leads to.
// Gamma: a compound with only a work detection and one with nothing.
void tst_RVFileSystemBrowserCtrl::init()
{
    m_fixture.reset(new TestFixture);
    const QDir root(m_fixture->path());
    QHash<QString, QHash<QString, qint64>> ids; // project -> detection name -> id
    // Writes a project by hand. analyses: name -> detection names (one signal
    // each); compounds: name -> detection names, where "Other/name" names a
    // detection of the project already written under "Other".
    const auto write = [&](const QString& name, const Layout& analyses, const Layout& compounds) {
        KAObject2Project project(name, root.filePath(name));
        if (!TDatabase::createProject(project.folder(), name, nullptr))
            return false;
        std::unique_ptr<TDatabase> db(TDatabase::open(&project, false, nullptr));
        if (!db || !db->beginBatch())
            return false;
        for (const auto& analysis : analyses) {
            const qint64 a = db->addObject(KAObjectTypeAnalysis, 0, analysis.first);
            const qint64 s = db->addObject(KAObjectTypeSignal, a, QStringLiteral("FID"));
            for (const QString& pd : analysis.second)
                ids[name].insert(pd, db->addObject(KAObjectTypePeakDetect, s, pd, 0x1));
        }
        const qint64 list = db->addObject(KAObjectTypeCompoundList, 0, QStringLiteral("Targets"));
        for (const auto& compound : compounds) {
            const qint64 c = db->addObject(KAObjectTypeCompound, list, compound.first);
            for (const QString& entry : compound.second) {
                const QString other = entry.section('/', 0, -2); // another project's folder, if any
                const qint64 pd = ids.value(other.isEmpty() ? name : other).value(entry.section('/', -1));
                if (!db->addCompoundPeakDetect(c, pd, other.isEmpty() ? QString() : root.filePath(other)))
                    return false;
            }
        }
        return db->commitBatch();
    };
    QVERIFY(write("Alpha", {{"A1", {"a", "b", "tempPD_1"}}, {"A2", {"c"}}, {"A3", {"e"}}},
                  {{"C1", {"a", "b"}}, {"C2", {"b", "c"}}, {"C3", {"tempPD_1"}}}));
    QVERIFY(write("Beta", {{"B1", {"d"}}}, {{"C4", {"d", "Alpha/a", "Alpha/e"}}}));
    QVERIFY(write("Gamma", {{"G1", {"tempPD_9", "g"}}}, {{"C5", {"tempPD_9"}}, {"C6", {}}}));
    QVERIFY(root.mkdir(QStringLiteral("Notes")));
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({root.path()});
}

// The edge cases, all in one batch: "b", listed by two compounds, and "a",
// listed by two projects' compounds, show once; work detections never, so
// Gamma has no content; A3 is reached only through Beta, yet sits under
// Alpha. Other folders are listed as the plain explorer lists them.
void tst_RVFileSystemBrowserCtrl::folderListingFillsEveryProjectInOneBatch()
{
    KAFileSystemBrowserFilterPackage filter;
    filter.setRootForced(m_fixture->path());
    RVFileSystemBrowserCtrl ctrl{QString()};
    ctrl.init(&filter, nullptr, false);
    Node* root = ctrl.getTree()->firstChild();
    QCOMPARE(sorted(childNames(root)), (QStringList{"Alpha", "Beta", "Gamma", "Notes"}));
    Node* alpha = childNamed(root, QStringLiteral("Alpha"));
    QCOMPARE(sorted(childNames(alpha)), (QStringList{"A1", "A2", "A3"}));
    QCOMPARE(childNames(childNamed(alpha, QStringLiteral("A1"))), (QStringList{"a", "b"}));
    QCOMPARE(describe(childNamed(root, QStringLiteral("Beta"))), QStringLiteral("Beta | B1: d"));
    QCOMPARE(describe(childNamed(root, QStringLiteral("Gamma"))), QStringLiteral("Gamma | "));
    QVERIFY(carriesPlaceholder(childNamed(root, QStringLiteral("Notes"))));
    QCOMPARE(ProjectMgrInterface::returnMe()->currentProject(), nullptr); // opened silently to be read

    // Closed by the host, a project folds back to a placeholder: nothing is
    // left pointing into its database. Outside a batch it stays closed, and
    // entries into it lead nowhere. The nodes only point at the objects.
    QVERIFY(ProjectMgrInterface::returnMe()->closeProject(project(QStringLiteral("Alpha"))));
    QVERIFY(carriesPlaceholder(alpha));
    const QList<const KAObject2Project*> beta{project(QStringLiteral("Beta"))};
    RVFileSystemBrowserCtrl::AnalysisMap analyses;
    RVFileSystemBrowserCtrl::PeakDetectMap peakDetects;
    ctrl.getProjectsContent(beta, analyses, peakDetects);
    QVERIFY(!project(QStringLiteral("Alpha"))->db());
    QCOMPARE(peakDetects.size(), 1);
    std::unique_ptr<Node> tree(ctrl.createTreeView(beta, analyses, peakDetects).value(beta.first()));
    QCOMPARE(describe(tree.get()), QStringLiteral("Beta | B1: d"));
    QVERIFY(!tree->ownsData() && !tree->firstChild()->ownsData() && !tree->firstChild()->firstChild()->ownsData());

    // Expanding reads it again, once: no placeholder is left after.
    static_cast<KAAbstractBrowserCtrl&>(ctrl).fillTree(alpha);
    QCOMPARE(describe(alpha), QStringLiteral("Alpha | A1: a, b; A2: c"));
    static_cast<KAAbstractBrowserCtrl&>(ctrl).fillNodeOnExpand(alpha);
    QCOMPARE(alpha->childCount(), 2);
}

QTEST_MAIN(tst_RVFileSystemBrowserCtrl)
#include "tst_rvfilesystembrowserctrl.moc"
