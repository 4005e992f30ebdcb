#include "kaobject2project.h"
#include "kapropertyeditorhtml.h"
#include "tdescriptioncollector.h"
#include "testfixture.h"
#include <QTest>

class TestKAPropertyEditorHtml : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    // A read-only pane showing the picked object's name as text, never as markup, or a placeholder.
    void fedByTheDescriptionCollector()
    {
        KAPropertyEditorHtml editor;
        TDescriptionCollector::getInstance()->registerEditor(&editor);
        const KAObject2Project project(QStringLiteral("Alpha <b>bold</b>"), QStringLiteral("/data/alpha"));
        TDescriptionCollector::getInstance()->displayProperties(&project);
        QVERIFY(editor.isReadOnly() && editor.toPlainText().contains("Alpha <b>bold</b>"));
        TDescriptionCollector::getInstance()->displayProperties(nullptr);
        QVERIFY(editor.toPlainText().isEmpty() && editor.placeholderText() == "No object selected");
    }
};
QTEST_MAIN(TestKAPropertyEditorHtml)
#include "tst_kapropertyeditorhtml.moc"
