#include "testfixture.h"
#include "txmlmethod.h"

#include <QDir>
#include <QDomDocument>
#include <QTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

static QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

class TestTXMLMethod : public QObject
{
    Q_OBJECT
    std::unique_ptr<TestFixture> m_fixture;

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init() { m_fixture = std::make_unique<TestFixture>(); }
    void cleanup() { m_fixture.reset(); }

    // The saved files are read by people and by older versions: the bytes
    // are a contract, an existing declaration is not doubled, and what is
    // saved loads back as it was.
    void saveWritesUtf8WithTwoSpaceIndent()
    {
        const QString expected = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tree name=\"Données\">\n"
            "  <folder name=\"a &lt; b &amp; &quot;c&quot;\">\n    <note>été</note>\n  </folder>\n</tree>\n");
        const QString path = m_fixture->filePath(QStringLiteral("tree.xml"));
        for (bool declared : {false, true}) {
            QDomDocument doc, loaded;
            QVERIFY(doc.setContent(expected));
            const QString content = doc.toString(2);
            doc.replaceChild(doc.createProcessingInstruction(QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"UTF-8\"")),
                             doc.firstChild());
            if (!declared)
                doc.removeChild(doc.firstChild());
            QVERIFY(TXMLMethod::save(&doc, path, true, true));
            QCOMPARE(readAll(path), expected.toUtf8());
            QVERIFY(TXMLMethod::load(path, loaded));
            QCOMPARE(loaded.toString(2), content);
        }
    }

    void failedSaveKeepsPreviousFile_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("parent is a file") << QStringLiteral("parent-file");
        QTest::newRow("target is a folder") << QStringLiteral("target-folder");
#ifdef Q_OS_UNIX
        QTest::newRow("write fails midway (file size limit)") << QStringLiteral("size-limit");
#endif
    }

    // A save that fails says so, keeps the previous file's bytes and leaves
    // no temporary file next to it.
    void failedSaveKeepsPreviousFile()
    {
        QFETCH(QString, fault);
        const QByteArray previous = "<?xml version=\"1.0\"?>\n<tree name=\"previous\"/>\n";
        QDomDocument doc; // big enough to cross any write buffer
        QVERIFY(doc.setContent("<tree>" + QByteArray("<item name=\"entry\"/>").repeated(4000) + "</tree>"));
        const QString file = m_fixture->filePath(QStringLiteral("tree.xml"));
        const bool folder = fault == QLatin1String("target-folder");
        QVERIFY(folder ? QDir().mkdir(file) : writeAll(file, previous));
        const QString target = fault == QLatin1String("parent-file") ? file + QStringLiteral("/tree.xml") : file;
#ifdef Q_OS_UNIX
        // Files may not grow beyond 1 KiB: writes fail midway, as on a full disk.
        struct rlimit normal {}, limited {};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &normal), 0);
        limited = normal;
        limited.rlim_cur = fault == QLatin1String("size-limit") ? 1024 : normal.rlim_cur;
        std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &limited), 0);
#endif
        const bool saved = TXMLMethod::save(&doc, target, true, true);
#ifdef Q_OS_UNIX
        ::setrlimit(RLIMIT_FSIZE, &normal);
#endif
        QVERIFY(!saved);
        QVERIFY(folder ? QFileInfo(file).isDir() : readAll(file) == previous);
        QCOMPARE(QDir(m_fixture->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{QStringLiteral("tree.xml")});
    }

    void loadRefusesBadInput_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("accepted");
        auto nested = [](int depth) { return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth); };
        QTest::newRow("nested 500 deep") << nested(500) << true;
        QTest::newRow("nested 50,000 deep") << nested(50000) << false;
        QTest::newRow("truncated") << QByteArray("<?xml version=\"1.0\"?>\n<tree><folder name=\"x\"><a/") << false;
        QTest::newRow("binary") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("missing file") << QByteArray("missing") << false;
    }

    // Bad input is refused with a reason; deep nesting never reaches the DOM
    // parser, which overflows its stack on it.
    void loadRefusesBadInput()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, accepted);
        const QString path = m_fixture->filePath(QStringLiteral("input.xml"));
        QVERIFY(content == "missing" || writeAll(path, content));
        QDomDocument doc;
        QString error;
        QCOMPARE(TXMLMethod::load(path, doc, &error), accepted);
        QCOMPARE(error.isEmpty(), accepted);
        QCOMPARE(doc.documentElement().isNull(), !accepted);
    }
};

QTEST_GUILESS_MAIN(TestTXMLMethod)
#include "tst_txmlmethod.moc"
