#include "kaobject2.h"
#include "kaobject2folder.h"
#include "tdescriptioncollector.h"
#include "testfixture.h"

#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>

class TestTDescriptionCollector : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    // Kind and name reach every registered pane, the name as typed, never as
    // markup; a null object clears them; an unregistered pane is left alone.
    void describesToRegisteredPanes()
    {
        TDescriptionCollector* collector = TDescriptionCollector::getInstance();
        QTextEdit pane;
        QObject noSetHtml; // registered without a setHtml slot: skipped quietly
        collector->registerEditor(&pane);
        collector->registerEditor(&noSetHtml);
        collector->registerEditor(&pane); // twice: still one
        {
            QTextEdit shortLived; // leaves the list when destroyed
            collector->registerEditor(&shortLived);
            QCOMPARE(collector->editorCount(), 3);
        }
        QCOMPARE(collector->editorCount(), 2);
        const KAObject2 signal(KAObjectType(2), QStringLiteral("<b>A&B</b>"));
        const KAObject2Folder folder(QStringLiteral("Mine"), KAObjectTypeUserFolder);
        const KAObject2 project(KAObjectType(768), QStringLiteral("Project \"2024\""));
        QSignalSpy spy(collector, &TDescriptionCollector::descriptionChanged);
        for (const auto& c : QList<QPair<const KAObject2*, QString>>{
                 {&signal, "Signal"}, {&folder, "User folder"}, {&project, "Project"}}) {
            collector->displayProperties(c.first);
            QCOMPARE(collector->lastObject(), c.first);
            QCOMPARE(spy.count(), 1);
            const QString html = spy.takeFirst().at(0).toString();
            QVERIFY2(html.contains(c.first->name().toHtmlEscaped()) && html.contains(c.second), qPrintable(html));
            QVERIFY(pane.toPlainText().contains(c.first->name()) && pane.toPlainText().contains(c.second));
        }
        collector->displayProperties(nullptr);
        QCOMPARE(spy.count(), 1);
        QVERIFY(!collector->lastObject() && spy.at(0).at(0).toString().isEmpty() && pane.toPlainText().isEmpty());
        collector->unregisterEditor(&pane);
        collector->displayProperties(&project);
        QVERIFY(pane.toPlainText().isEmpty());
        collector->unregisterEditor(&noSetHtml);
        QCOMPARE(collector->editorCount(), 0);
    }
};

QTEST_MAIN(TestTDescriptionCollector)
#include "tst_tdescriptioncollector.moc"
