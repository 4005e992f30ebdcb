#include "kalineeditsearch.h"
#include "messageloggerinterface.h"
#include "testfixture.h"
#include "ttranslator.h"

#include <QAction>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <memory>

namespace {

// The button the field shows for its clear action.
QToolButton* clearButton(KALineEditSearch* field)
{
    for (QToolButton* button : field->findChildren<QToolButton*>()) {
        if (button->defaultAction() == field->clearAction())
            return button;
    }
    return nullptr;
}

} // namespace

class TestKALineEditSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void stopSearch_data();
    void stopSearch();
    void clearButtonOnlyWithText();
    void searchModes_data();
    void searchModes();
    void unknownModeRefused();
    void placeholderInBothLanguages();

private:
    std::unique_ptr<KALineEditSearch> m_field;
};

void TestKALineEditSearch::initTestCase()
{
    kaInitTestEnvironment();
}

void TestKALineEditSearch::init()
{
    MessageLoggerInterface::returnMe()->clear();
    m_field.reset(new KALineEditSearch);
    m_field->resize(240, m_field->sizeHint().height());
    m_field->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_field.get()));
    m_field->setFocus();
}

void TestKALineEditSearch::cleanup()
{
    m_field.reset();
}

void TestKALineEditSearch::stopSearch_data()
{
    QTest::addColumn<bool>("byEscape");

    QTest::newRow("Escape key") << true;
    QTest::newRow("clear button") << false;
}

// Either way the search stops once, the field empties and looks idle, and
// no edit is reported (an edit would start a new search).
void TestKALineEditSearch::stopSearch()
{
    QFETCH(bool, byEscape);

    QTest::keyClicks(m_field.get(), QStringLiteral("peak 12"));
    m_field->changeSearchMode(KALineEditSearch::ModeSearching);
    QSignalSpy stops(m_field.get(), &KALineEditSearch::stopSearch);
    QSignalSpy edits(m_field.get(), &QLineEdit::textEdited);

    if (byEscape) {
        QTest::keyClick(m_field.get(), Qt::Key_Escape);
    } else {
        QToolButton* button = clearButton(m_field.get());
        QVERIFY(button);
        QTRY_VERIFY(button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
    }
    QCOMPARE(stops.count(), 1);
    QCOMPARE(edits.count(), 0);
    QVERIFY(m_field->text().isEmpty());
    QCOMPARE(m_field->searchMode(), int(KALineEditSearch::ModeIdle));
}

void TestKALineEditSearch::clearButtonOnlyWithText()
{
    QToolButton* button = clearButton(m_field.get());
    QVERIFY(button);
    QVERIFY(!button->isVisible());
    QTest::keyClicks(m_field.get(), QStringLiteral("a"));
    QTRY_VERIFY(button->isVisible());
    QTest::keyClick(m_field.get(), Qt::Key_Backspace);
    QTRY_VERIFY(!button->isVisible());
}

void TestKALineEditSearch::searchModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("tinted");

    QTest::newRow("searching") << int(KALineEditSearch::ModeSearching) << true;
    QTest::newRow("idle") << int(KALineEditSearch::ModeIdle) << false;
}

void TestKALineEditSearch::searchModes()
{
    QFETCH(int, mode);
    QFETCH(bool, tinted);

    const QColor idleBase = m_field->palette().color(QPalette::Base);
    // From the other mode, so that the change is a real one.
    m_field->changeSearchMode(mode == 0 ? 1 : 0);
    m_field->changeSearchMode(mode);
    QCOMPARE(m_field->searchMode(), mode);
    QCOMPARE(m_field->palette().color(QPalette::Base) != idleBase, tinted);
    QCOMPARE(m_field->property("searching").toBool(), tinted);
}

void TestKALineEditSearch::unknownModeRefused()
{
    m_field->changeSearchMode(KALineEditSearch::ModeSearching);
    m_field->changeSearchMode(2);
    QCOMPARE(m_field->searchMode(), int(KALineEditSearch::ModeSearching));
    QCOMPARE(MessageLoggerInterface::returnMe()->texts().size(), 1);
}

void TestKALineEditSearch::placeholderInBothLanguages()
{
    QCOMPARE(m_field->placeholderText(), QStringLiteral("Search"));
    TTranslator::setLanguage(TTranslator::French);
    KALineEditSearch french;
    TTranslator::setLanguage(TTranslator::English);
    QCOMPARE(french.placeholderText(), QStringLiteral("Rechercher"));
}

QTEST_MAIN(TestKALineEditSearch)
#include "tst_kalineeditsearch.moc"
