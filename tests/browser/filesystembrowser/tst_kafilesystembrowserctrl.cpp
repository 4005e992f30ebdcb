#include "applicationinterface.h"
#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowserobserver.h"
#include "kafilesystembrowsersearchmediator.h"
#include "kaobject2project.h"
#include "kaobject2well.h"
#include "kaobject2winfolder.h"
#include "kaprojectbrowserabstract.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "texternalprocess.h"
#include "ttree.h"

#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QTest>
#include <QTextStream>
#include <QUrl>

#include <memory>

namespace {

using TreeTest::Node;
using TreeTest::childNamed;
using TreeTest::carriesPlaceholder;

// One line per node: depth, name, expanded flag and child count.
QStringList snapshot(const Node* node, int depth = 0)
{
    QStringList lines;
    if (!node)
        return lines;
    lines << QStringLiteral("%1%2 %3 %4")
                 .arg(QString(depth, QLatin1Char(' ')),
                      node->data() ? node->data()->name() : QStringLiteral("<null>"))
                 .arg(node->isExpanded())
                 .arg(node->childCount());
    for (const Node* c = node->firstChild(); c; c = c->nextSibling())
        lines += snapshot(c, depth + 1);
    return lines;
}

QStringList diskSnapshot(const QString& folder)
{
    QStringList entries;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        entries << it.next();
    entries.sort();
    return entries;
}

QDomDocument readTreeState()
{
    QDomDocument doc;
    QFile file(KAProjectBrowserAbstract::treeStatePath());
    if (file.open(QIODevice::ReadOnly))
        doc.setContent(&file);
    return doc;
}

// The saved record of one browser, as text; empty when there is none.
QString savedRecord(const QDomDocument& doc, const QString& name)
{
    QString text;
    QTextStream stream(&text);
    for (QDomElement e = doc.documentElement().firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.attribute(QStringLiteral("name")) == name)
            e.save(stream, 0);
    }
    return text;
}

// The forced root folder's node, its entries listed.
Node* forcedRoot(KAFileSystemBrowserCtrl* ctrl)
{
    Node* forced = ctrl->getTree()->firstChild();
    if (carriesPlaceholder(forced))
        ctrl->fillNodeOnExpand(forced);
    return forced;
}

class RecordingObserver : public KAFileSystemBrowserObserver
{
public:
    explicit RecordingObserver(bool answer = false) : m_answer(answer) {}
    void fsObjectSelected(const KAObject2* object) override { selected << object; }
    bool fsObjectOpened(const KAObject2* object) override
    {
        opened << object;
        return m_answer;
    }
    QList<const KAObject2*> selected;
    QList<const KAObject2*> opened;

private:
    bool m_answer;
};

// Counts the searches the mediator runs: each one clears the editor first.
class CountingCtrl : public KAFileSystemBrowserCtrl
{
public:
    using KAFileSystemBrowserCtrl::KAFileSystemBrowserCtrl;
    void clearEditor() override
    {
        ++clears;
        KAFileSystemBrowserCtrl::clearEditor();
    }
    int clears = 0;
};

} // namespace

// The controller: expand state per name, paths, observers, the deferred
// search, drag URLs and the file manager.
class tst_KAFileSystemBrowserCtrl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void expandStateSavedUnderNameAndRestored();
    void expandPath_data();
    void expandPath();
    void openItem_data();
    void openItem();
    void searchIsDeferredAndEmptyTextRestoresView();
    void objectUrls_data();
    void objectUrls();
    void projectObjectUrls();
    void createFolder_data();
    void createFolder();
    void filterOfWrongTypeShowsComputerOnly();
    void closedProjectLeavesTheTree();
    // Last: a dangling view crashes the run; the others report first.
    void viewDestroyedWithItsParentFirst();

private:
    CountingCtrl* makeCtrl(const QString& name = QStringLiteral("tst_ctrl"));
    QString makeSampleFolders();

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<CountingCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent;
    QList<QUrl> m_opened;
};

void tst_KAFileSystemBrowserCtrl::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAFileSystemBrowserCtrl::init()
{
    m_fixture = std::make_unique<TestFixture>();
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
    m_parent = std::make_unique<QWidget>();
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    kaClearAliases();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
    m_opened.clear();
    TExternalProcess::setOpener([this](const QUrl& url) {
        m_opened << url;
        return true;
    });
}

void tst_KAFileSystemBrowserCtrl::cleanup()
{
    m_ctrl.reset();
    m_parent.reset();
    m_filter.reset();
    TExternalProcess::setOpener({});
    kaClearAliases();
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
    m_fixture.reset();
}

CountingCtrl* tst_KAFileSystemBrowserCtrl::makeCtrl(const QString& name)
{
    m_ctrl = std::make_unique<CountingCtrl>(name);
    m_ctrl->init(m_filter.get(), nullptr, false);
    return m_ctrl.get();
}

QString tst_KAFileSystemBrowserCtrl::makeSampleFolders()
{
    const QString root = m_fixture->filePath("root");
    if (!QDir().mkpath(root + "/alpha") || !QDir().mkpath(root + "/beta/gamma"))
        return QString();
    QFile file(root + "/beta/d.txt");
    return file.open(QIODevice::WriteOnly) ? root : QString();
}

void tst_KAFileSystemBrowserCtrl::expandStateSavedUnderNameAndRestored()
{
    const QString root = makeSampleFolders();
    QVERIFY(!root.isEmpty());
    m_filter->setRootForced(root);
    // Each browser expands one folder; the destructor saves.
    const auto expandAndSave = [this](const QString& browser, const QString& folder) {
        KAFileSystemBrowserCtrl* ctrl = makeCtrl(browser);
        Node* node = childNamed(forcedRoot(ctrl), folder);
        ctrl->fillNodeOnExpand(node);
        node->setExpanded(true);
        m_ctrl.reset();
    };
    expandAndSave(QStringLiteral("Other"), QStringLiteral("alpha"));
    const QString otherRecord = savedRecord(readTreeState(), QStringLiteral("Other"));
    QVERIFY(otherRecord.contains(QStringLiteral("alpha")));
    expandAndSave(QStringLiteral("Mine"), QStringLiteral("beta"));

    const QDomDocument doc = readTreeState();
    QCOMPARE(doc.documentElement().tagName(), QStringLiteral("filesystemtreeconfig"));
    QVERIFY(!savedRecord(doc, QStringLiteral("Mine")).isEmpty());
    QCOMPARE(savedRecord(doc, QStringLiteral("Other")), otherRecord);

    KAFileSystemBrowserCtrl* again = makeCtrl(QStringLiteral("Mine"));
    Node* beta = childNamed(again->getTree()->firstChild(), QStringLiteral("beta"));
    QVERIFY(beta);
    QVERIFY(beta->isExpanded());
    QVERIFY(childNamed(beta, QStringLiteral("gamma")));
    QVERIFY(!childNamed(again->getTree()->firstChild(), QStringLiteral("alpha"))->isExpanded());

    beta = childNamed(forcedRoot(makeCtrl(QStringLiteral("Third"))), QStringLiteral("beta"));
    QVERIFY(beta);
    QVERIFY(!beta->isExpanded());
    QVERIFY(carriesPlaceholder(beta));
}

void tst_KAFileSystemBrowserCtrl::expandPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QStringList>("expanded"); // names from the Computer node, none: nothing changes
    QTest::addColumn<bool>("select");          // shown and selected in the view
    const QStringList whole{"Data", "Data/beta", "Data/beta/gamma"};
    QTest::newRow("a missing alias changes nothing") << "%Missing%/beta" << false << QStringList{} << false;
    QTest::newRow("third part missing: two levels")
        << "%Data%/beta/missing" << true << QStringList{"Data", "Data/beta"} << false;
    QTest::newRow("the whole path") << "%Data%/beta/gamma" << true << whole << false;
    QTest::newRow("the whole path, selected in the view") << "%Data%/beta/gamma" << true << whole << true;
    QTest::newRow("names compared without case") << "%data%/BETA" << true << QStringList{"Data", "Data/beta"} << false;
    QTest::newRow("second part missing: the alias only") << "%Data%/nothing/beta" << true << QStringList{"Data"} << false;
}

void tst_KAFileSystemBrowserCtrl::expandPath()
{
    QFETCH(QString, path);
    QFETCH(bool, result);
    QFETCH(QStringList, expanded);
    QFETCH(bool, select);
    const QString root = makeSampleFolders();
    QVERIFY(!root.isEmpty());
    QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Data"), root));
    m_filter->remove(FsDrives);
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    if (select)
        ctrl->initView(m_parent.get());
    const QStringList before = snapshot(ctrl->getTree());

    QCOMPARE(ctrl->expandPath(QDir::toNativeSeparators(path), select), result);
    if (expanded.isEmpty()) {
        QCOMPARE(snapshot(ctrl->getTree()), before);
        return;
    }
    for (const QString& expandedPath : expanded) {
        Node* node = ctrl->getTree();
        for (const QString& part : expandedPath.split('/'))
            node = childNamed(node, part);
        QVERIFY2(node, qPrintable(expandedPath));
        QVERIFY2(node->isExpanded(), qPrintable(expandedPath));
        QVERIFY2(!carriesPlaceholder(node), qPrintable(expandedPath)); // listed
    }
    Node* data = childNamed(ctrl->getTree(), QStringLiteral("Data"));
    QVERIFY(childNamed(data, QStringLiteral("alpha")));
    QVERIFY(!childNamed(data, QStringLiteral("alpha"))->isExpanded());
    if (!select)
        return;
    Node* gamma = childNamed(childNamed(data, QStringLiteral("beta")), QStringLiteral("gamma"));
    QCOMPARE(ctrl->getSelectedObject(), static_cast<const KAObject2*>(gamma->data()));
    auto* item = dynamic_cast<KATreeWidgetItem*>(ctrl->view()->currentItem());
    QVERIFY(item);
    QCOMPARE(item->text(0), QStringLiteral("gamma"));
    for (QTreeWidgetItem* parent = item->parent(); parent; parent = parent->parent())
        QVERIFY2(parent->isExpanded(), qPrintable(parent->text(0)));
}

void tst_KAFileSystemBrowserCtrl::openItem_data()
{
    QTest::addColumn<bool>("firstAnswer");
    QTest::addColumn<bool>("secondAnswer");
    QTest::addColumn<bool>("result");
    QTest::addColumn<int>("secondCalls");
    QTest::newRow("both open it: the first only") << true << true << true << 0;
    QTest::newRow("the second opens it") << false << true << true << 1;
    QTest::newRow("nobody opens it") << false << false << false << 1;
}

void tst_KAFileSystemBrowserCtrl::openItem()
{
    QFETCH(bool, firstAnswer);
    QFETCH(bool, secondAnswer);
    QFETCH(bool, result);
    QFETCH(int, secondCalls);
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    RecordingObserver first(firstAnswer);
    RecordingObserver second(secondAnswer);
    ctrl->registerObserver(&first);
    ctrl->registerObserver(&first); // registered once only
    ctrl->registerObserver(&second);
    Node* node = ctrl->getTree()->firstChild();
    QVERIFY(node);
    QCOMPARE(ctrl->openItem(node), result);
    QCOMPARE(first.opened, QList<const KAObject2*>{node->data()});
    QCOMPARE(second.opened.size(), secondCalls);
    ctrl->itemSelected(node);
    QCOMPARE(first.selected, QList<const KAObject2*>{node->data()});
    QCOMPARE(second.selected, first.selected);

    // No node, or a node without object: nobody is asked.
    Node empty;
    QVERIFY(!ctrl->openItem(nullptr));
    QVERIFY(!ctrl->openItem(&empty));
    QCOMPARE(first.opened.size(), 1);

    ctrl->unregisterObserver(&first);
    ctrl->itemSelected(node);
    ctrl->openItem(node);
    QCOMPARE(first.selected.size(), 1);
    QCOMPARE(first.opened.size(), 1);
}

void tst_KAFileSystemBrowserCtrl::searchIsDeferredAndEmptyTextRestoresView()
{
    // Without project content the search looks at project names only and
    // runs on this thread.
    m_filter->remove(FsProjectContent);
    CountingCtrl* ctrl = makeCtrl();
    ctrl->initView(m_parent.get());
    const int topLevel = ctrl->view()->topLevelItemCount();
    QVERIFY(topLevel > 0);
    QCOMPARE(ctrl->searchTimer()->interval(), 500);

    // Two texts within the delay: one search, for the last.
    QVERIFY(!ctrl->search(QStringLiteral("first")));
    ctrl->search(QStringLiteral("Study"));
    QVERIFY(ctrl->searchTimer()->isActive());
    QCOMPARE(ctrl->clears, 0);
    QTRY_COMPARE(ctrl->mediator()->text(), QStringLiteral("Study"));
    QCOMPARE(ctrl->clears, 1);
    QVERIFY(!ctrl->searchTimer()->isActive());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateSearch);
    QCOMPARE(ctrl->view()->topLevelItemCount(), 0);

    // Shown: the view goes back to the Computer tree.
    ctrl->search(QString());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
    QCOMPARE(ctrl->view()->topLevelItemCount(), topLevel);
    QVERIFY(!ctrl->isSearchActive());

    // Pending: the timer stops and no search runs.
    ctrl->search(QStringLiteral("again"));
    QVERIFY(ctrl->searchTimer()->isActive());
    ctrl->search(QString());
    QVERIFY(!ctrl->searchTimer()->isActive());
    QCOMPARE(ctrl->view()->currentStateId(), KAAbstractBrowserListView::stateNormal);
    QTest::qWait(600);
    QCOMPARE(ctrl->clears, 1);
}

void tst_KAFileSystemBrowserCtrl::objectUrls_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("encoded"); // how the name ends the URL
    QTest::newRow("percent") << "100%.txt" << QByteArray("100%25.txt");
    QTest::newRow("hash") << "#1 result.txt" << QByteArray("%231%20result.txt");
    QTest::newRow("non-Latin letters") << QString::fromUtf8("Échantillon 試料.txt")
                                       << QByteArray("%C3%89chantillon%20%E8%A9%A6%E6%96%99.txt");
    QTest::newRow("question mark") << "why?.txt" << QByteArray("why%3F.txt");
}

void tst_KAFileSystemBrowserCtrl::objectUrls()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, encoded);
    const QString folder = m_fixture->filePath(QString::fromUtf8("dossier été"));
    QVERIFY(QDir().mkpath(folder));
    const QString path = folder + '/' + name;
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    m_filter->setRootForced(folder);
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* node = childNamed(forcedRoot(ctrl), name);
    QVERIFY(node);
    QList<const KAObject2*> objects{node->data()};
    const QList<QUrl> urls = ctrl->getObjectUrls(&objects);
    QCOMPARE(urls.size(), 1);
    const QUrl url = urls.first();
    QCOMPARE(url.toLocalFile(), path);
    QVERIFY2(url.toEncoded().endsWith("/dossier%20%C3%A9t%C3%A9/" + encoded), url.toEncoded().constData());
    // What another application reads back from the drag.
    QCOMPARE(QUrl::fromEncoded(url.toEncoded()).toLocalFile(), path);
}

void tst_KAFileSystemBrowserCtrl::projectObjectUrls()
{
    const KAObject2Project* project = m_fixture->openSampleProject(QStringLiteral("Urls"));
    QVERIFY(project);
    TechDB::TDatabase* db = project->db();
    QVERIFY(db);
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    const QList<const KAObject2*> analyses = db->getObjectLst(KAObjectTypeAnalysis);
    const QList<const KAObject2*> wells = db->getObjectLst(KAObjectTypeWell);
    QVERIFY(!analyses.isEmpty());
    QVERIFY(!wells.isEmpty());
    const auto* well = static_cast<const KAObject2Well*>(wells.first());
    const QList<const KAObject2*> datasets = db->datasetList(well);
    QVERIFY(!datasets.isEmpty());
    QList<const KAObject2*> objects{analyses.first(), well, project};
    QList<QUrl> expected{QUrl::fromLocalFile(TechDB::TDatabase::objectFilePath(analyses.first()))};
    for (const KAObject2* dataset : datasets)
        expected << QUrl::fromLocalFile(TechDB::TDatabase::objectFilePath(dataset));
    QCOMPARE(ctrl->getObjectUrls(&objects), expected);
    QVERIFY(ctrl->getObjectUrls(nullptr).isEmpty());
}

// A project unfolded in the explorer, then closed by the host: nothing of
// the explorer may keep pointing into its database, which goes with it.
void tst_KAFileSystemBrowserCtrl::closedProjectLeavesTheTree()
{
    const KAObject2Project* project = m_fixture->openSampleProject(QStringLiteral("Closing"));
    QVERIFY(project);
    m_filter->setRootForced(m_fixture->path());
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    ctrl->initView(m_parent.get());
    Node* node = TreeTest::nodeOf(ctrl->getTree(), project);
    QVERIFY(node);
    ctrl->fillNodeOnExpand(node);
    QVERIFY(node->childCount() > 1);
    QVERIFY(ctrl->getCtrlList().contains(project));

    QVERIFY(ProjectMgrInterface::returnMe()->closeProject(project));
    QVERIFY(!project->db());
    // The project is shown again, folded, unfolding anew when asked.
    node = TreeTest::nodeOf(ctrl->getTree(), project);
    QVERIFY(carriesPlaceholder(node));
    ctrl->fillNodeOnExpand(node);
    QVERIFY(project->db());
    QVERIFY(node->childCount() > 1);
}

void tst_KAFileSystemBrowserCtrl::createFolder_data()
{
    QTest::addColumn<QString>("item");   // "none", "folder", "project", "file"
    QTest::addColumn<QString>("opened"); // relative to the fixture, "-" for nothing
    QTest::newRow("no item: the first top-level folder") << "none" << "root";
    QTest::newRow("a folder") << "folder" << "root/beta";
    QTest::newRow("a project: its folder") << "project" << "root/Study";
    QTest::newRow("a file: nothing") << "file" << "-";
}

void tst_KAFileSystemBrowserCtrl::createFolder()
{
    QFETCH(QString, item);
    QFETCH(QString, opened);
    const QString root = makeSampleFolders();
    QVERIFY(!root.isEmpty());
    QVERIFY(TSampleGenerator::generateProject(root + "/Study", QStringLiteral("Study"), TestFixture::smallOptions(), 1));
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({root});
    m_filter->remove(FsProjectContent);
    m_filter->setRootForced(root);
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    Node* forced = forcedRoot(ctrl);
    Node* beta = childNamed(forced, QStringLiteral("beta"));
    ctrl->fillNodeOnExpand(beta);
    const QStringList disk = diskSnapshot(m_fixture->path());

    Node* node = item == QLatin1String("folder") ? beta
        : item == QLatin1String("project")       ? childNamed(forced, QStringLiteral("Study"))
        : item == QLatin1String("file")          ? childNamed(beta, QStringLiteral("d.txt"))
                                                 : nullptr;
    std::unique_ptr<KATreeWidgetItem> widgetItem;
    if (node)
        widgetItem = std::make_unique<KATreeWidgetItem>(static_cast<QTreeWidget*>(nullptr), node->data());

    const bool result = ctrl->createFolder(widgetItem.get());
    if (opened == QLatin1String("-")) {
        QVERIFY(!result);
        QVERIFY(m_opened.isEmpty());
    } else {
        QVERIFY(result);
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened.first().toLocalFile(), m_fixture->filePath(opened));
    }
    QCOMPARE(diskSnapshot(m_fixture->path()), disk); // the browser itself never writes
}

void tst_KAFileSystemBrowserCtrl::filterOfWrongTypeShowsComputerOnly()
{
    KAProjectBrowserFilterPackage projectFilter;
    auto ctrl = std::make_unique<KAFileSystemBrowserCtrl>(QStringLiteral("tst_ctrl"));
    ctrl->init(&projectFilter, nullptr, false);
    QVERIFY(!ctrl->getFilter());
    QCOMPARE(ctrl->getTree()->childCount(), 0);
    QVERIFY(!ctrl->expandPath(QStringLiteral("%Missing%"), false));
}

// The editor belongs to the widget it was given: a host that closes its
// window before it drops the controller must not bring the controller down.
void tst_KAFileSystemBrowserCtrl::viewDestroyedWithItsParentFirst()
{
    KAFileSystemBrowserCtrl* ctrl = makeCtrl();
    ctrl->initView(m_parent.get());
    QVERIFY(ctrl->getEditor());
    m_parent.reset();
    QVERIFY(!ctrl->getEditor());
    QVERIFY(!ctrl->getSelectedObject());
    ctrl->refreshCurrentView(false);
    m_ctrl.reset();
}

QTEST_MAIN(tst_KAFileSystemBrowserCtrl)
#include "tst_kafilesystembrowserctrl.moc"
