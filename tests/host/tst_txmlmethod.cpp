#include "testfixture.h"
#include "txmlmethod.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QTest>

#include <memory>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QDomDocument sampleDocument()
{
    QDomDocument doc;
    QDomElement root = doc.createElement(QStringLiteral("tree"));
    root.setAttribute(QStringLiteral("name"), QStringLiteral("Données"));
    doc.appendChild(root);
    QDomElement folder = doc.createElement(QStringLiteral("folder"));
    folder.setAttribute(QStringLiteral("name"), QStringLiteral("a < b & \"c\""));
    root.appendChild(folder);
    QDomElement note = doc.createElement(QStringLiteral("note"));
    note.appendChild(doc.createTextNode(QStringLiteral("été")));
    folder.appendChild(note);
    return doc;
}

// A document big enough to cross any write buffer.
QDomDocument largeDocument()
{
    QDomDocument doc;
    QDomElement root = doc.createElement(QStringLiteral("tree"));
    doc.appendChild(root);
    for (int i = 0; i < 4000; ++i) {
        QDomElement e = doc.createElement(QStringLiteral("item"));
        e.setAttribute(QStringLiteral("name"), QStringLiteral("entry number %1").arg(i));
        root.appendChild(e);
    }
    return doc;
}

QByteArray nested(int depth)
{
    QByteArray data = "<?xml version=\"1.0\"?>";
    data.reserve(depth * 7 + 32);
    for (int i = 0; i < depth; ++i)
        data += "<a>";
    for (int i = 0; i < depth; ++i)
        data += "</a>";
    return data;
}

} // namespace

class TestTXMLMethod : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void saveWritesUtf8WithTwoSpaceIndent();
    void saveKeepsAnExistingDeclaration();
    void failedSaveKeepsPreviousFile_data();
    void failedSaveKeepsPreviousFile();
    void loadRefusesBadInput_data();
    void loadRefusesBadInput();
    void loadReadsWhatSaveWrote();
    void elementAndAttributeLookup();

private:
    std::unique_ptr<TestFixture> m_fixture;
};

void TestTXMLMethod::initTestCase()
{
    kaInitTestEnvironment();
}

void TestTXMLMethod::init()
{
    m_fixture = std::make_unique<TestFixture>();
}

void TestTXMLMethod::cleanup()
{
    m_fixture.reset();
}

void TestTXMLMethod::saveWritesUtf8WithTwoSpaceIndent()
{
    const QDomDocument doc = sampleDocument();
    const QString path = m_fixture->filePath(QStringLiteral("tree.xml"));
    QVERIFY(TXMLMethod::save(&doc, path, true, true));

    const QByteArray expected = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<tree name=\"Données\">\n"
        "  <folder name=\"a &lt; b &amp; &quot;c&quot;\">\n"
        "    <note>été</note>\n"
        "  </folder>\n"
        "</tree>\n").toUtf8();
    QCOMPARE(readAll(path), expected);
}

void TestTXMLMethod::saveKeepsAnExistingDeclaration()
{
    QDomDocument doc = sampleDocument();
    doc.insertBefore(doc.createProcessingInstruction(QStringLiteral("xml"),
                                                     QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")),
                     doc.firstChild());
    const QString path = m_fixture->filePath(QStringLiteral("tree.xml"));
    QVERIFY(TXMLMethod::save(&doc, path, true, true));
    const QByteArray bytes = readAll(path);
    QCOMPARE(bytes.count("<?xml"), 1);
    QVERIFY(bytes.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tree"));
    QVERIFY(bytes.contains("Donn\xc3\xa9" "es"));
}

void TestTXMLMethod::failedSaveKeepsPreviousFile_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("parent is a file") << QStringLiteral("parent-file");
    QTest::newRow("target is a folder") << QStringLiteral("target-folder");
    QTest::newRow("folder not writable") << QStringLiteral("read-only-folder");
    QTest::newRow("write fails midway (file size limit)") << QStringLiteral("size-limit");
}

void TestTXMLMethod::failedSaveKeepsPreviousFile()
{
    QFETCH(QString, fault);

    const QByteArray previous = "<?xml version=\"1.0\"?>\n<tree name=\"previous\"/>\n";
    const QDomDocument doc = largeDocument();
    QDir dir(m_fixture->path());
    QString target;
    QString watched; // file that must keep its bytes
    QString folder;  // folder that must hold nothing new
    QStringList entries; // what that folder holds, before and after

    if (fault == QLatin1String("parent-file")) {
        watched = dir.filePath(QStringLiteral("plain"));
        QVERIFY(writeAll(watched, previous));
        target = watched + QStringLiteral("/tree.xml");
        folder = dir.path();
        entries << QStringLiteral("plain");
        QVERIFY(!TXMLMethod::save(&doc, target, true, true));
    } else if (fault == QLatin1String("target-folder")) {
        QVERIFY(dir.mkdir(QStringLiteral("tree.xml")));
        target = dir.filePath(QStringLiteral("tree.xml"));
        folder = dir.path();
        entries << QStringLiteral("tree.xml");
        QVERIFY(!TXMLMethod::save(&doc, target, true, true));
        QVERIFY(QFileInfo(target).isDir());
    } else if (fault == QLatin1String("read-only-folder")) {
#ifdef Q_OS_UNIX
        if (::geteuid() == 0)
            QSKIP("permissions do not stop the superuser");
#endif
        QVERIFY(dir.mkdir(QStringLiteral("locked")));
        folder = dir.filePath(QStringLiteral("locked"));
        watched = folder + QStringLiteral("/tree.xml");
        target = watched;
        entries << QStringLiteral("tree.xml");
        QVERIFY(writeAll(watched, previous));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
        const bool saved = TXMLMethod::save(&doc, target, true, true);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY(!saved);
    } else {
#ifdef Q_OS_UNIX
        // The process may not grow any file beyond 1 KiB: the bytes of the
        // new document stop reaching the disk, as on a full disk.
        folder = dir.path();
        watched = dir.filePath(QStringLiteral("tree.xml"));
        target = watched;
        entries << QStringLiteral("tree.xml");
        QVERIFY(writeAll(watched, previous));
        struct rlimit saved {};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &saved), 0);
        struct rlimit limited = saved;
        limited.rlim_cur = 1024;
        auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        const bool ok = TXMLMethod::save(&doc, target, true, true);
        ::setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, previousHandler);
        QVERIFY(!ok);
#else
        QSKIP("needs a per-process file size limit");
#endif
    }

    if (!watched.isEmpty())
        QCOMPARE(readAll(watched), previous);
    // No temporary file is left behind next to the target.
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), entries);
}

void TestTXMLMethod::loadRefusesBadInput_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("well-formed") << QByteArray("<?xml version=\"1.0\"?>\n<tree><a/></tree>\n") << true;
    QTest::newRow("nested 500 deep") << nested(500) << true;
    QTest::newRow("nested 50,000 deep") << nested(50000) << false;
    QTest::newRow("truncated") << QByteArray("<?xml version=\"1.0\"?>\n<tree><folder name=\"x\"><a/") << false;
    QTest::newRow("unclosed element") << QByteArray("<tree><folder></tree>") << false;
    QTest::newRow("plain text") << QByteArray("this is not a settings file\n") << false;
    QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestTXMLMethod::loadRefusesBadInput()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, accepted);

    const QString path = m_fixture->filePath(QStringLiteral("input.xml"));
    QVERIFY(writeAll(path, content));
    QDomDocument doc;
    QString error;
    QCOMPARE(TXMLMethod::load(path, doc, &error), accepted);
    QCOMPARE(error.isEmpty(), accepted);
    if (accepted)
        QVERIFY(!doc.documentElement().isNull());
}

void TestTXMLMethod::loadReadsWhatSaveWrote()
{
    const QDomDocument doc = sampleDocument();
    const QString path = m_fixture->filePath(QStringLiteral("tree.xml"));
    QVERIFY(TXMLMethod::save(&doc, path, true, true));
    QDomDocument loaded;
    QVERIFY(TXMLMethod::load(path, loaded));
    // The declaration comes back as a processing instruction; the content
    // is the same.
    QVERIFY(loaded.firstChild().isProcessingInstruction());
    loaded.removeChild(loaded.firstChild());
    QCOMPARE(loaded.toString(2), doc.toString(2));

    QDomDocument missing;
    QString error;
    QVERIFY(!TXMLMethod::load(m_fixture->filePath(QStringLiteral("absent.xml")), missing, &error));
    QVERIFY(!error.isEmpty());
}

void TestTXMLMethod::elementAndAttributeLookup()
{
    QDomDocument doc;
    QVERIFY(doc.setContent(QByteArray("<r><!-- note -->text<a k=\"first\"/><b><a k=\"nested\"/></b>"
                                      "<a k=\"second\"/></r>")));
    const QDomElement r = doc.documentElement();

    QDomNode found;
    QVERIFY(TXMLMethod::getElement(r, QStringLiteral("a"), found));
    QCOMPARE(TXMLMethod::getInfoString(found, QStringLiteral("k")), QStringLiteral("first"));
    QCOMPARE(TXMLMethod::getInfoString(found, QStringLiteral("missing")), QString());

    // Only direct children count.
    QVERIFY(TXMLMethod::getElement(doc, QStringLiteral("r"), found));
    QVERIFY(!TXMLMethod::getElement(doc, QStringLiteral("a"), found));
    QVERIFY(found.isNull());
    QVERIFY(!TXMLMethod::getElement(r, QStringLiteral("zz"), found));
    QVERIFY(found.isNull());

    // A node that is not an element has no attributes.
    QCOMPARE(TXMLMethod::getInfoString(r.firstChild(), QStringLiteral("k")), QString());
    QCOMPARE(TXMLMethod::getInfoString(QDomNode(), QStringLiteral("k")), QString());
}

QTEST_GUILESS_MAIN(TestTXMLMethod)
#include "tst_txmlmethod.moc"
