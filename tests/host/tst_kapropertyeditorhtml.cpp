#include "kaobject2project.h"
#include "kapropertyeditorhtml.h"
#include "tdescriptioncollector.h"
#include "testfixture.h"

#include <QTest>

class TestKAPropertyEditorHtml : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void fedByTheDescriptionCollector();
    void readOnly();
};

void TestKAPropertyEditorHtml::initTestCase()
{
    kaInitTestEnvironment();
}

// Registered as the host's description pane, the editor receives the
// selected object's description; names reach the screen as text, never as
// markup.
void TestKAPropertyEditorHtml::fedByTheDescriptionCollector()
{
    TDescriptionCollector* collector = TDescriptionCollector::getInstance();
    KAPropertyEditorHtml editor;
    collector->registerEditor(&editor);
    const KAObject2Project project(QStringLiteral("Alpha <b>bold</b>"), QStringLiteral("/data/alpha"));

    collector->displayProperties(&project);
    QCOMPARE(editor.currentHtml(), TDescriptionCollector::describe(&project));
    QVERIFY2(editor.toPlainText().contains(QLatin1String("Alpha <b>bold</b>")), qPrintable(editor.toPlainText()));

    collector->displayProperties(nullptr);
    QVERIFY(editor.currentHtml().isEmpty());
    QVERIFY(editor.toPlainText().isEmpty());
    QCOMPARE(editor.placeholderText(), QStringLiteral("No object selected"));
    collector->unregisterEditor(&editor);
}

void TestKAPropertyEditorHtml::readOnly()
{
    KAPropertyEditorHtml editor;
    editor.setHtml(QStringLiteral("<p>text</p>"));
    editor.show();
    QVERIFY(QTest::qWaitForWindowExposed(&editor));
    editor.setFocus();
    QTest::keyClicks(&editor, QStringLiteral("typed"));
    QCOMPARE(editor.toPlainText(), QStringLiteral("text"));
}

QTEST_MAIN(TestKAPropertyEditorHtml)
#include "tst_kapropertyeditorhtml.moc"
