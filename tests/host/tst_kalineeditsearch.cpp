#include "kalineeditsearch.h"
#include "messageloggerinterface.h"
#include "testfixture.h"
#include "ttranslator.h"

#include <QAction>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

class TestKALineEditSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    // Either way the search stops once, the field empties and looks idle, and
    // no edit is reported (an edit would start a new search).
    void stopSearchByEscapeOrClearButton()
    {
        for (const bool byEscape : {true, false}) {
            KALineEditSearch field;
            field.show();
            QVERIFY(QTest::qWaitForWindowExposed(&field));
            QToolButton* button = nullptr;
            for (QToolButton* b : field.findChildren<QToolButton*>())
                button = b->defaultAction() == field.clearAction() ? b : button;
            QVERIFY(button && !button->isVisible()); // shown only while there is text
            QTest::keyClicks(&field, QStringLiteral("peak 12"));
            field.changeSearchMode(KALineEditSearch::ModeSearching);
            QSignalSpy stops(&field, &KALineEditSearch::stopSearch);
            QSignalSpy edits(&field, &QLineEdit::textEdited);
            QTRY_VERIFY(button->isVisible());
            byEscape ? QTest::keyClick(&field, Qt::Key_Escape) : QTest::mouseClick(button, Qt::LeftButton);
            QCOMPARE(stops.count(), 1);
            QCOMPARE(edits.count(), 0);
            QVERIFY(field.text().isEmpty());
            QCOMPARE(field.searchMode(), int(KALineEditSearch::ModeIdle));
            QTRY_VERIFY(!button->isVisible());
        }
    }

    // The searching look tells the user the view shows results; a mode the
    // field does not know is refused with a message and changes nothing.
    void searchLookAndRefusedMode()
    {
        KALineEditSearch field;
        const QColor idleBase = field.palette().color(QPalette::Base);
        field.changeSearchMode(KALineEditSearch::ModeSearching);
        QVERIFY(field.palette().color(QPalette::Base) != idleBase && field.property("searching").toBool());
        MessageLoggerInterface::returnMe()->clear();
        field.changeSearchMode(2);
        QCOMPARE(field.searchMode(), int(KALineEditSearch::ModeSearching));
        QCOMPARE(MessageLoggerInterface::returnMe()->texts().size(), 1);
        field.changeSearchMode(KALineEditSearch::ModeIdle);
        QVERIFY(field.palette().color(QPalette::Base) == idleBase && !field.property("searching").toBool());

        QCOMPARE(field.placeholderText(), QStringLiteral("Search"));
        TTranslator::setLanguage(TTranslator::French);
        KALineEditSearch french;
        TTranslator::setLanguage(TTranslator::English);
        QCOMPARE(french.placeholderText(), QStringLiteral("Rechercher"));
    }
};

QTEST_MAIN(TestKALineEditSearch)
#include "tst_kalineeditsearch.moc"
