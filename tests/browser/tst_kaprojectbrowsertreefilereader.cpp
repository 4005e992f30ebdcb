#include "kaobject2folder.h"
#include "kaprojectbrowsertreefile.h"
#include "kaprojectbrowsertreefilereader.h"
#include "testfixture.h"
#include "ttree.h"

#include <QFile>
#include <QTest>

// A saved tree whose analysis branch holds one entry, with more after it.
static QByteArray doc(const QByteArray& name, const QByteArray& more = QByteArray())
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE projectBrowser_tree>\n<root version=\"1.0\" "
           "projectName=\"P\">\n <KAObject2Analysis>\n  <KAObject2 name=\"" + name
        + "\" folder=\"/Analysis/F\"/>\n </KAObject2Analysis>\n" + more + "</root>\n";
}

// The fast reader of saved trees must take every file the writer makes and answer as the XML reader.
class tst_KAProjectBrowserTreeFileReader : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void sameAnswerAsXml_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("readers"); // which take the file: 2 both, 1 the general one only, 0 neither
        // The writer's own file: escapes, non-Latin letters, one beyond 16 bits, line breaks and tabs.
        TestFixture fixture;
        TTree<KAObject2*> top;
        top.setOwnsData(true);
        top.setData(new KAObject2Folder(QStringLiteral("Lot <1> & \"2\" 'été' 試料"), KAObjectTypeAnalysisFolder));
        for (const char* name : {"a\tb\nc\rd", "🧪 Échantillon", "", "x > y ; &amp;"})
            (new TTree<KAObject2*>(&top, -1))->setData(new KAObject2(KAObjectTypeAnalysis, QString::fromUtf8(name)));
        const QString path = fixture.filePath(QStringLiteral("%2.projectbrowser.xml"));
        QVERIFY(KAProjectBrowserTreeFile::write(path, QStringLiteral("P <&>"), {{QStringLiteral("KAObject2Analysis"), &top},
                                                                               {QStringLiteral("KAObject2Well"), nullptr}}));
        QFile file(path.arg(QStringLiteral("default")));
        QTest::newRow("written") << (file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray()) << 2;
        QTest::newRow("CRLF") << doc("A").replace("\n", "\r\n") << 2;
        QTest::newRow("references") << doc("&#10;&#x9;&#x1F9EA;&apos;&quot;&lt;&gt;&amp;&#233;") << 2;
        // Layouts the fast reader leaves to the general one rather than misread.
        QTest::newRow("raw tab in a value") << doc("a\tb") << 1;
        QTest::newRow("repeated branch") << doc("A", "<KAObject2Analysis/>") << 1;
        QTest::newRow("attributes swapped") << doc("A", "<KAObject2Well><KAObject2 folder=\"/F\" name=\"W\"/></KAObject2Well>") << 1;
        QTest::newRow("unknown branch") << doc("A", "<Other><KAObject2 name=\"x\" folder=\"/y/z\"/></Other>") << 1;
        QTest::newRow("text after the root") << QByteArray(doc("A") + "tail") << 1;
        // Neither reads a damaged or foreign file as a tree: bad UTF-8, bad references, ...
        for (const char* name : {"\xC3\x28", "\xC0\xAF", "&#0;", "&# 65;", "&nbsp;"})
            QTest::addRow("name %s", QByteArray(name).toPercentEncoding().constData()) << doc(name) << 0;
        QTest::newRow("truncated") << doc("A").chopped(20) << 0;
        QTest::newRow("other root") << doc("A").replace("root", "saved_search") << 0;
    }
    void sameAnswerAsXml()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, readers);
        QMap<QString, KAProjectBrowserTreeFile::FolderMap> general, quick;
        QCOMPARE(KAProjectBrowserTreeFile::readXml(bytes, &general), readers > 0);
        QCOMPARE(KAProjectBrowserTreeFileReader::isValidUtf8(bytes)
                     && KAProjectBrowserTreeFileReader(bytes).read(KAProjectBrowserTreeFile::BranchTags, &quick), readers > 1);
        QCOMPARE(quick, readers == 2 ? general : decltype(general)());
    }
};

QTEST_MAIN(tst_KAProjectBrowserTreeFileReader)
#include "tst_kaprojectbrowsertreefilereader.moc"
