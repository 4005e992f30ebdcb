#include "kaobject2folder.h"
#include "kaprojectbrowsertreefile.h"
#include "kaprojectbrowsertreefilereader.h"
#include "testfixture.h"
#include "ttree.h"

#include <QFile>
#include <QTest>

namespace {

using Branches = QMap<QString, KAProjectBrowserTreeFile::FolderMap>;

const QByteArray Head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE projectBrowser_tree>\n";

QByteArray document(const QByteArray& body)
{
    return Head + "<root version=\"1.0\" projectName=\"P\">\n" + body + "</root>\n";
}

QByteArray entry(const QByteArray& name, const QByteArray& folder)
{
    return "    <KAObject2 name=\"" + name + "\" folder=\"" + folder + "\"/>\n";
}

} // namespace

// The fast reader of saved project trees against the general XML reader:
// whenever the fast one accepts a file it must give the general reader's
// answer, and it must accept every file the writer makes.
class tst_KAProjectBrowserTreeFileReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void writtenFileIsReadFast();
    void sameAnswerAsXml_data();
    void sameAnswerAsXml();
};

void tst_KAProjectBrowserTreeFileReader::initTestCase()
{
    kaInitTestEnvironment();
}

// Names that need escaping, non-Latin letters, a character outside the
// basic plane, and the line breaks and tabs the writer turns into
// references.
void tst_KAProjectBrowserTreeFileReader::writtenFileIsReadFast()
{
    TestFixture fixture;
    TTree<KAObject2*> branch;
    branch.setOwnsData(true);
    branch.setData(new KAObject2Folder(QStringLiteral("Analysis"), KAObjectTypeAnalysisFolder));
    const QString folderName = QStringLiteral("Lot <1> & \"2\" 'été' 試料");
    auto* folder = new TTree<KAObject2*>(&branch, -1);
    folder->setData(new KAObject2Folder(folderName, KAObjectTypeUserFolder));
    const QStringList names = {QStringLiteral("a\tb\nc\rd"), QStringLiteral("🧪 Échantillon"), QString(),
                               QStringLiteral("x > y ; &amp;")};
    for (const QString& name : names)
        (new TTree<KAObject2*>(folder, -1))->setData(new KAObject2(KAObjectTypeAnalysis, name));
    const QString pathTemplate = fixture.filePath(QStringLiteral("%2.projectbrowser.xml"));
    QVERIFY(KAProjectBrowserTreeFile::write(pathTemplate, QStringLiteral("P <&>"),
                                            {{QStringLiteral("KAObject2Analysis"), &branch},
                                             {QStringLiteral("KAObject2Well"), nullptr}}));
    QFile file(pathTemplate.arg(QStringLiteral("default")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();

    Branches fast;
    QVERIFY(KAProjectBrowserTreeFileReader::isValidUtf8(bytes));
    QVERIFY(KAProjectBrowserTreeFileReader(bytes).read(KAProjectBrowserTreeFile::BranchTags, &fast));
    Branches general;
    QVERIFY(KAProjectBrowserTreeFile::readXml(bytes, &general));
    QCOMPARE(fast, general);
    const QString path = QStringLiteral("/Analysis/") + folderName;
    QStringList expected = names;
    std::reverse(expected.begin(), expected.end()); // a new child goes first
    expected.prepend(folderName);                   // the folder, then what it holds
    QCOMPARE(fast.value(QStringLiteral("KAObject2Analysis")).value(path), expected);
    QVERIFY(fast.contains(QStringLiteral("KAObject2Well")));
}

void tst_KAProjectBrowserTreeFileReader::sameAnswerAsXml_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("fast");   // the fast reader takes the file
    QTest::addColumn<bool>("valid");  // the general reader takes it

    const QByteArray analysis = "  <KAObject2Analysis>\n" + entry("A", "/Analysis") + entry("B", "/Analysis/F")
        + entry("C", "/Analysis/F") + "  </KAObject2Analysis>\n";
    QTest::newRow("plain") << document(analysis) << true << true;
    QTest::newRow("no document type")
        << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root version=\"1.0\">" + analysis + "</root>")
        << true << true;
    QTest::newRow("empty branch") << document("<KAObject2Well/>") << true << true;
    QTest::newRow("empty root") << QByteArray(Head + "<root version=\"1.0\"/>") << true << true;
    QTest::newRow("CRLF") << QByteArray(document(analysis)).replace("\n", "\r\n") << true << true;
    QTest::newRow("references")
        << document("<KAObject2Analysis>" + entry("&#10;&#x9;&#x1F9EA;&apos;&quot;&lt;&gt;&amp;", "/Analysis/&#233;t&#xE9;")
                    + "</KAObject2Analysis>")
        << true << true;
    QTest::newRow("comment") << document("<!-- note -->" + analysis) << false << true;
    QTest::newRow("attributes swapped")
        << document("<KAObject2Analysis><KAObject2 folder=\"/Analysis/F\" name=\"A\"/></KAObject2Analysis>") << false
        << true;
    QTest::newRow("unknown branch") << document("<Other><KAObject2 name=\"x\" folder=\"/y/z\"/></Other>" + analysis)
                                    << false << true;
    QTest::newRow("repeated branch") << document(analysis + "<KAObject2Analysis>" + entry("Z", "/Analysis/G")
                                                 + "</KAObject2Analysis>")
                                     << false << true;
    QTest::newRow("raw tab in a value")
        << document("<KAObject2Analysis>" + entry("a\tb", "/Analysis/F") + "</KAObject2Analysis>") << false << true;
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF" + document(analysis)) << false << true;
    QTest::newRow("text after the root") << QByteArray(document(analysis) + "tail") << false << true;
    QTest::newRow("duplicate attribute") << QByteArray(Head + "<root a=\"1\" a=\"2\"/>") << false << false;
    QTest::newRow("truncated") << document(analysis).left(document(analysis).size() / 2) << false << false;
    QTest::newRow("invalid UTF-8")
        << document("<KAObject2Analysis>" + entry("\xC3\x28", "/Analysis/F") + "</KAObject2Analysis>") << false << false;
    QTest::newRow("overlong UTF-8")
        << document("<KAObject2Analysis>" + entry("\xC0\xAF", "/Analysis/F") + "</KAObject2Analysis>") << false << false;
    QTest::newRow("reference to NUL")
        << document("<KAObject2Analysis>" + entry("&#0;", "/Analysis/F") + "</KAObject2Analysis>") << false << false;
    QTest::newRow("reference with a space")
        << document("<KAObject2Analysis>" + entry("&# 65;", "/Analysis/F") + "</KAObject2Analysis>") << false << false;
    QTest::newRow("unknown entity")
        << document("<KAObject2Analysis>" + entry("&nbsp;", "/Analysis/F") + "</KAObject2Analysis>") << false << false;
    QTest::newRow("other root") << QByteArray(Head + "<saved_search version=\"1.0\"/>") << false << false;
}

void tst_KAProjectBrowserTreeFileReader::sameAnswerAsXml()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, fast);
    QFETCH(bool, valid);

    Branches general;
    QCOMPARE(KAProjectBrowserTreeFile::readXml(bytes, &general), valid);
    Branches quick;
    const bool taken = KAProjectBrowserTreeFileReader::isValidUtf8(bytes)
        && KAProjectBrowserTreeFileReader(bytes).read(KAProjectBrowserTreeFile::BranchTags, &quick);
    QCOMPARE(taken, fast);
    if (taken)
        QCOMPARE(quick, general);
    else
        QVERIFY(quick.isEmpty());
}

QTEST_MAIN(tst_KAProjectBrowserTreeFileReader)
#include "tst_kaprojectbrowsertreefilereader.moc"
