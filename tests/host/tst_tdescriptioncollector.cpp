#include "kaobject2.h"
#include "kaobject2folder.h"
#include "tdescriptioncollector.h"
#include "testfixture.h"

#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>

#include <memory>

class TestTDescriptionCollector : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void describesKindAndEscapedName_data();
    void describesKindAndEscapedName();
    void feedsRegisteredEditorsOnly();
    void destroyedEditorLeavesTheList();
    void nullObjectClearsThePanes();

private:
    std::unique_ptr<QTextEdit> m_pane;
};

void TestTDescriptionCollector::init()
{
    m_pane.reset(new QTextEdit);
    TDescriptionCollector::getInstance()->registerEditor(m_pane.get());
}

void TestTDescriptionCollector::cleanup()
{
    TDescriptionCollector::getInstance()->unregisterEditor(m_pane.get());
    m_pane.reset();
    TDescriptionCollector::getInstance()->displayProperties(nullptr);
}

void TestTDescriptionCollector::describesKindAndEscapedName_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("kindName");

    QTest::newRow("signal with markup in its name") << 2 << "<b>A&B</b>" << "Signal";
    QTest::newRow("user folder") << 260 << "Mine" << "User folder";
    QTest::newRow("project") << 768 << "Project \"2024\"" << "Project";
}

void TestTDescriptionCollector::describesKindAndEscapedName()
{
    QFETCH(int, kind);
    QFETCH(QString, name);
    QFETCH(QString, kindName);

    std::unique_ptr<KAObject2> object;
    if (kind == 260)
        object.reset(new KAObject2Folder(name, KAObjectTypeUserFolder));
    else
        object.reset(new KAObject2(KAObjectType(kind), name));

    TDescriptionCollector* collector = TDescriptionCollector::getInstance();
    QSignalSpy spy(collector, &TDescriptionCollector::descriptionChanged);
    collector->displayProperties(object.get());
    QCOMPARE(collector->lastObject(), object.get());
    QCOMPARE(spy.count(), 1);
    const QString html = spy.at(0).at(0).toString();
    QVERIFY2(html.contains(name.toHtmlEscaped()), qPrintable(html));
    QVERIFY2(html.contains(kindName), qPrintable(html));
    // The pane shows the name as text, not as markup.
    QVERIFY(m_pane->toPlainText().contains(name));
    QVERIFY(m_pane->toPlainText().contains(kindName));
}

void TestTDescriptionCollector::feedsRegisteredEditorsOnly()
{
    QTextEdit other;
    QObject noSetHtml; // registered but without setHtml: skipped quietly
    TDescriptionCollector* collector = TDescriptionCollector::getInstance();
    collector->registerEditor(&noSetHtml);
    collector->registerEditor(m_pane.get()); // twice: still one
    QCOMPARE(collector->editorCount(), 2);

    KAObject2 object(KAObjectTypeWell, QStringLiteral("Well A1"));
    collector->displayProperties(&object);
    QVERIFY(m_pane->toPlainText().contains(QStringLiteral("Well A1")));
    QVERIFY(other.toPlainText().isEmpty());

    collector->unregisterEditor(m_pane.get());
    KAObject2 next(KAObjectTypeWell, QStringLiteral("Well B2"));
    collector->displayProperties(&next);
    QVERIFY(m_pane->toPlainText().contains(QStringLiteral("Well A1")));
    collector->unregisterEditor(&noSetHtml);
    QCOMPARE(collector->editorCount(), 0);
}

void TestTDescriptionCollector::destroyedEditorLeavesTheList()
{
    TDescriptionCollector* collector = TDescriptionCollector::getInstance();
    {
        QTextEdit shortLived;
        collector->registerEditor(&shortLived);
        QCOMPARE(collector->editorCount(), 2);
    }
    QCOMPARE(collector->editorCount(), 1);
    KAObject2 object(KAObjectTypeWell, QStringLiteral("Well A1"));
    collector->displayProperties(&object);
    QVERIFY(m_pane->toPlainText().contains(QStringLiteral("Well A1")));
}

void TestTDescriptionCollector::nullObjectClearsThePanes()
{
    TDescriptionCollector* collector = TDescriptionCollector::getInstance();
    KAObject2 object(KAObjectTypeWell, QStringLiteral("Well A1"));
    collector->displayProperties(&object);
    QSignalSpy spy(collector, &TDescriptionCollector::descriptionChanged);
    collector->displayProperties(nullptr);
    QVERIFY(!collector->lastObject());
    QCOMPARE(spy.count(), 1);
    QVERIFY(spy.at(0).at(0).toString().isEmpty());
    QVERIFY(m_pane->toPlainText().isEmpty());
}

QTEST_MAIN(TestTDescriptionCollector)
#include "tst_tdescriptioncollector.moc"
