#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2file.h"
#include "kaprojectbrowserabstract.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "testfixture.h"
#include "ttree.h"

#include <QApplication>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QTreeWidgetItemIterator>
#include <QUrl>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

namespace {

using Node = TTree<KAObject2*>;
using TreeTest::childNodes;
using TreeTest::childNamed;
using TreeTest::carriesPlaceholder;

const char ChildSwitch[] = "--list-as-child";

// Sorted: a listing comes in the system's order.
QStringList childNames(const Node* parent)
{
    return TreeTest::sorted(TreeTest::childNames(parent));
}

int countNodes(const Node* node)
{
    int count = 1;
    for (const Node* c : childNodes(node))
        count += countNodes(c);
    return count;
}

// Lists the forced root and each of its folders, one "name: children" line
// per folder. Run by the unreadable-folder test as an unprivileged child.
int listAsChild(int argc, char** argv)
{
    QApplication app(argc, argv);
    kaInitTestEnvironment();
    KAFileSystemBrowserFilterPackage filter;
    filter.setRootForced(QString::fromLocal8Bit(argv[2]));
    KAFileSystemBrowserCtrl ctrl(QStringLiteral("tst_badinput_child"));
    ctrl.init(&filter, nullptr, false);
    Node* forced = ctrl.getTree()->firstChild();
    if (carriesPlaceholder(forced))
        ctrl.fillNodeOnExpand(forced);
    for (Node* folder : childNodes(forced)) {
        if (carriesPlaceholder(folder))
            ctrl.fillNodeOnExpand(folder);
        std::printf("%s: %s\n", qPrintable(folder->data()->name()), qPrintable(childNames(folder).join(',')));
    }
    return 0;
}

} // namespace

// What the disk throws at the file-system tree: unreadable and vanishing
// folders, symbolic link loops, names that are not UTF-8, and a damaged
// expand-state file.
class tst_KAFileSystemBrowserBadInput : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void unreadableFolderListsEmpty();
    void folderRemovedBetweenExpansions();
    void symlinkToAncestorNeverLoops();
    void namesThatAreNotUtf8();
    void damagedExpandStateIgnoredAndReplaced_data();
    void damagedExpandStateIgnoredAndReplaced();

private:
    KAFileSystemBrowserCtrl* makeCtrl(const QString& root);

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<KAFileSystemBrowserCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent; // of the views; goes after the controller
    QList<QByteArray> m_rawEntries;    // names Qt cannot remove, deepest first
};

void tst_KAFileSystemBrowserBadInput::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAFileSystemBrowserBadInput::init()
{
    m_fixture = std::make_unique<TestFixture>();
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
    m_parent = std::make_unique<QWidget>();
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
}

void tst_KAFileSystemBrowserBadInput::cleanup()
{
    m_ctrl.reset();
    m_parent.reset();
    for (const QByteArray& entry : qAsConst(m_rawEntries)) {
        if (::unlink(entry.constData()) != 0)
            ::rmdir(entry.constData());
    }
    m_rawEntries.clear();
    // A folder left unreadable by a failed check would outlive the fixture.
    ::chmod(QFile::encodeName(m_fixture->filePath("root/locked")).constData(), 0755);
    m_filter.reset();
    m_fixture.reset();
}

KAFileSystemBrowserCtrl* tst_KAFileSystemBrowserBadInput::makeCtrl(const QString& root)
{
    m_filter->setRootForced(root);
    m_ctrl = std::make_unique<KAFileSystemBrowserCtrl>(QStringLiteral("tst_badinput"));
    m_ctrl->init(m_filter.get(), nullptr, false);
    Node* forced = m_ctrl->getTree()->firstChild();
    if (carriesPlaceholder(forced))
        m_ctrl->fillNodeOnExpand(forced);
    return m_ctrl.get();
}

void tst_KAFileSystemBrowserBadInput::unreadableFolderListsEmpty()
{
    const QString root = m_fixture->filePath("root");
    QVERIFY(QDir().mkpath(root + "/locked/inside"));
    QVERIFY(QDir().mkpath(root + "/open/inside"));
    QVERIFY(QFile(root + "/locked/secret.txt").open(QIODevice::WriteOnly));
    QVERIFY(::chmod(QFile::encodeName(root + "/locked").constData(), 0) == 0);

    QString output;
    if (::geteuid() != 0) {
        KAFileSystemBrowserCtrl* ctrl = makeCtrl(root);
        for (Node* folder : childNodes(ctrl->getTree()->firstChild())) {
            if (carriesPlaceholder(folder))
                ctrl->fillNodeOnExpand(folder);
            output += folder->data()->name() + ": " + childNames(folder).join(',') + '\n';
        }
    } else {
        // Permissions do not stop root: the listing runs as nobody.
        const QString setpriv = QStandardPaths::findExecutable(QStringLiteral("setpriv"));
        if (setpriv.isEmpty())
            QSKIP("running as root without setpriv: no way to make a folder unreadable");
        for (const QString& folder : {m_fixture->path(), root, root + "/open", root + "/open/inside"})
            QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0755) == 0);
        const QString home = m_fixture->filePath("home");
        QVERIFY(QDir().mkpath(home));
        QVERIFY(::chmod(QFile::encodeName(home).constData(), 0777) == 0);
        QProcess child;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), home);
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home);
        env.insert(QStringLiteral("XDG_CACHE_HOME"), home + "/cache");
        env.insert(QStringLiteral("XDG_DATA_HOME"), home + "/data");
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + "/config");
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        child.setProcessEnvironment(env);
        child.start(setpriv, {QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                              QStringLiteral("--clear-groups"), QStringLiteral("--"),
                              QCoreApplication::applicationFilePath(), QLatin1String(ChildSwitch), root});
        QVERIFY(child.waitForFinished(120000));
        if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0) {
            const QByteArray why = "the unprivileged listing did not run: " + child.readAllStandardError();
            QSKIP(why.constData());
        }
        output = QString::fromLocal8Bit(child.readAllStandardOutput());
    }
    QVERIFY(::chmod(QFile::encodeName(root + "/locked").constData(), 0755) == 0);
    QStringList lines = output.split('\n', Qt::SkipEmptyParts);
    lines.sort();
    QCOMPARE(lines, (QStringList{"locked: ", "open: inside"}));
}

void tst_KAFileSystemBrowserBadInput::folderRemovedBetweenExpansions()
{
    const QString root = m_fixture->filePath("root");
    QVERIFY(QDir().mkpath(root + "/going/sub"));
    QVERIFY(QDir().mkpath(root + "/staying"));
    KAFileSystemBrowserCtrl* ctrl = makeCtrl(root);
    ctrl->initView(m_parent.get());
    Node* going = childNamed(ctrl->getTree()->firstChild(), QStringLiteral("going"));
    QVERIFY(going);
    ctrl->fillNodeOnExpand(going);
    going->setExpanded(true);
    Node* sub = childNamed(going, QStringLiteral("sub"));
    QVERIFY(carriesPlaceholder(sub));

    QVERIFY(QDir(root + "/going").removeRecursively());
    // Its placeholder still there: expanding lists nothing.
    ctrl->fillNodeOnExpand(sub);
    QCOMPARE(sub->childCount(), 0);

    ctrl->refreshCurrentView(false);
    Node* forced = ctrl->getTree()->firstChild();
    QCOMPARE(childNames(forced), QStringList{"staying"});
    for (QTreeWidgetItemIterator it(ctrl->view()); *it; ++it)
        QVERIFY((*it)->text(0) != QLatin1String("going"));
}

void tst_KAFileSystemBrowserBadInput::symlinkToAncestorNeverLoops()
{
    const QString root = m_fixture->filePath("root");
    QVERIFY(QDir().mkpath(root + "/a/b"));
    QVERIFY(QFile::link(root + "/a", root + "/a/b/loop"));
    {
        KAFileSystemBrowserCtrl* ctrl = makeCtrl(root);
        // Level by level, as a user opens it: a, b, loop, b, loop, b.
        Node* node = childNamed(ctrl->getTree()->firstChild(), QStringLiteral("a"));
        const QStringList steps{"b", "loop", "b", "loop", "b"};
        for (const QString& step : steps) {
            QVERIFY(node);
            QVERIFY(carriesPlaceholder(node));
            ctrl->fillNodeOnExpand(node);
            node->setExpanded(true);
            node = childNamed(node, step);
        }
        QVERIFY(node);
        m_ctrl.reset(); // saves the expand state through the link
    }
    // Rebuilding from that state ends, and the tree stays small.
    KAFileSystemBrowserCtrl* ctrl = makeCtrl(root);
    QVERIFY(countNodes(ctrl->getTree()) < 50);
    Node* a = childNamed(ctrl->getTree()->firstChild(), QStringLiteral("a"));
    QVERIFY(a && a->isExpanded());
    QVERIFY(childNamed(a, QStringLiteral("b")));
    QVERIFY(childNamed(a, QStringLiteral("b"))->isExpanded());

    ctrl->initView(m_parent.get());
    ctrl->refreshCurrentView(false);
    QVERIFY(countNodes(ctrl->getTree()) < 50);
}

void tst_KAFileSystemBrowserBadInput::namesThatAreNotUtf8()
{
    const QString root = m_fixture->filePath("root");
    QVERIFY(QDir().mkpath(root));
    const QByteArray base = QFile::encodeName(root);
    m_rawEntries = {base + "/bad\xff name.txt", base + "/folder\xfe\xff/inner", base + "/folder\xfe\xff"};
    const int fd = ::open(m_rawEntries.at(0).constData(), O_CREAT | O_WRONLY, 0644);
    QVERIFY(fd >= 0);
    ::close(fd);
    QVERIFY(::mkdir(m_rawEntries.at(2).constData(), 0755) == 0);
    QVERIFY(::mkdir(m_rawEntries.at(1).constData(), 0755) == 0);
    QVERIFY(QDir().mkpath(root + "/plain"));

    // Such entries cannot be named in Unicode: whether they show or not, the
    // rest of the folder is listed and nothing breaks.
    KAFileSystemBrowserCtrl* ctrl = makeCtrl(root);
    Node* forced = ctrl->getTree()->firstChild();
    QVERIFY(childNamed(forced, QStringLiteral("plain")));
    const int listed = forced->childCount();
    QVERIFY(listed >= 1 && listed <= 3);
    for (Node* child : childNodes(forced)) {
        QVERIFY(!child->data()->name().isEmpty());
        if (carriesPlaceholder(child))
            ctrl->fillNodeOnExpand(child);
        child->setExpanded(true);
        QList<const KAObject2*> objects{child->data()};
        ctrl->getObjectUrls(&objects); // must not crash; the URL may not reach the file
    }
    ctrl->initView(m_parent.get());
    ctrl->refreshCurrentView(false);
    m_ctrl.reset(); // saves names that are not valid UTF-8
    KAFileSystemBrowserCtrl* again = makeCtrl(root);
    QCOMPARE(again->getTree()->firstChild()->childCount(), listed);
    QDomDocument doc;
    QFile file(KAProjectBrowserAbstract::treeStatePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(doc.setContent(&file)); // still well-formed XML
}

void tst_KAFileSystemBrowserBadInput::damagedExpandStateIgnoredAndReplaced_data()
{
    const QByteArray record = "<instance name=\"tst_badinput\"><node name=\"Computer\" expanded=\"1\">"
                              "<node name=\"root\" expanded=\"1\"><node name=\"beta\" expanded=\"1\"/>"
                              "</node></node></instance>";
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("another version") << "<filesystemtreeconfig version=\"0.1\">" + record + "</filesystemtreeconfig>";
    QTest::newRow("no version") << "<filesystemtreeconfig>" + record + "</filesystemtreeconfig>";
    QTest::newRow("malformed") << "<filesystemtreeconfig version=\"0.2\">" + record.left(60);
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("binary") << QByteArray("\x00\xff\xfe<\x01", 5);
}

void tst_KAFileSystemBrowserBadInput::damagedExpandStateIgnoredAndReplaced()
{
    QFETCH(QByteArray, content);
    const QString root = m_fixture->filePath("root");
    QVERIFY(QDir().mkpath(root + "/beta/gamma"));
    QFile damaged(KAProjectBrowserAbstract::treeStatePath());
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write(content);
    damaged.close();

    KAFileSystemBrowserCtrl* ctrl = makeCtrl(root);
    Node* beta = childNamed(ctrl->getTree()->firstChild(), QStringLiteral("beta"));
    QVERIFY(beta);
    QVERIFY(!beta->isExpanded());
    QVERIFY(carriesPlaceholder(beta));
    m_ctrl.reset();

    QFile saved(KAProjectBrowserAbstract::treeStatePath());
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QDomDocument doc;
    QVERIFY(doc.setContent(&saved));
    const QDomElement top = doc.documentElement();
    QCOMPARE(top.tagName(), QStringLiteral("filesystemtreeconfig"));
    QCOMPARE(top.attribute(QStringLiteral("version")), QStringLiteral("0.2"));
    QCOMPARE(top.childNodes().count(), 1);
    QCOMPARE(top.firstChildElement().attribute(QStringLiteral("name")), QStringLiteral("tst_badinput"));
}

int main(int argc, char** argv)
{
    if (argc == 3 && qstrcmp(argv[1], ChildSwitch) == 0)
        return listAsChild(argc, argv);
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    tst_KAFileSystemBrowserBadInput test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_kafilesystembrowserbadinput.moc"
