#include "testfixture.h"
#include "tmessagebox.h"
#include "ttranslator.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

struct Question {
    QString kind;
    QString text;
    bool offered = false;
};

} // namespace

class TestTMessageBox : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init();
    void cleanup();

    void providerAnswersQuestions_data();
    void providerAnswersQuestions();
    void askForDeleteReturnsApplyToAll_data();
    void askForDeleteReturnsApplyToAll();
    void deleteBoxOffersCheckBoxOnlyWhenAsked();
    void checkBoxTextInFrench();
    void modalDeleteBoxAnswers_data();
    void modalDeleteBoxAnswers();

private:
    // Answers with `answer`, ticks the box with `tick`, records the question.
    void answerWith(int answer, bool tick = false);

    QList<Question> m_questions;
};

void TestTMessageBox::init()
{
    m_questions.clear();
}

void TestTMessageBox::cleanup()
{
    TMessageBox::setAnswerProvider({});
    TTranslator::setLanguage(TTranslator::English);
}

void TestTMessageBox::answerWith(int answer, bool tick)
{
    TMessageBox::setAnswerProvider([this, answer, tick](const QString& kind, const QString& text, bool* applyToAll) {
        m_questions.append({kind, text, applyToAll != nullptr});
        if (applyToAll)
            *applyToAll = tick;
        return answer;
    });
}

void TestTMessageBox::providerAnswersQuestions_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("expected");

    QTest::newRow("yes/no: yes") << "questionYesNo" << 0 << 0;
    QTest::newRow("yes/no: no") << "questionYesNo" << 1 << 1;
    QTest::newRow("yes/no: anything else is no") << "questionYesNo" << 7 << 1;
    QTest::newRow("yes/no/cancel: yes") << "questionYesNoCancel" << 0 << 0;
    QTest::newRow("yes/no/cancel: no") << "questionYesNoCancel" << 1 << 1;
    QTest::newRow("yes/no/cancel: cancel") << "questionYesNoCancel" << 2 << 2;
    QTest::newRow("yes/no/cancel: anything else is cancel") << "questionYesNoCancel" << -1 << 2;
}

void TestTMessageBox::providerAnswersQuestions()
{
    QFETCH(QString, kind);
    QFETCH(int, given);
    QFETCH(int, expected);

    answerWith(given);
    const QString text = QStringLiteral("Save <b>Run &lt;1&gt;</b>?");
    const int answer = kind == QLatin1String("questionYesNo")
        ? TMessageBox::questionYesNo(nullptr, QStringLiteral("Title"), text)
        : TMessageBox::questionYesNoCancel(nullptr, QStringLiteral("Title"), text);
    QCOMPARE(answer, expected);
    QCOMPARE(m_questions.size(), 1);
    QCOMPARE(m_questions[0].kind, kind);
    QCOMPARE(m_questions[0].text, text);
    QVERIFY(!m_questions[0].offered);
}

void TestTMessageBox::askForDeleteReturnsApplyToAll_data()
{
    QTest::addColumn<bool>("offer");
    QTest::addColumn<int>("given");
    QTest::addColumn<bool>("tick");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("applyToAll");

    QTest::newRow("yes, box ticked") << true << 0 << true << 0 << true;
    QTest::newRow("yes, box left") << true << 0 << false << 0 << false;
    QTest::newRow("no, box ticked") << true << 1 << true << 1 << true;
    QTest::newRow("single item: no box, yes") << false << 0 << true << 0 << false;
    QTest::newRow("single item: no box, no") << false << 1 << false << 1 << false;
}

void TestTMessageBox::askForDeleteReturnsApplyToAll()
{
    QFETCH(bool, offer);
    QFETCH(int, given);
    QFETCH(bool, tick);
    QFETCH(int, expected);
    QFETCH(bool, applyToAll);

    answerWith(given, tick);
    bool all = !applyToAll; // must be overwritten
    const QString text = QStringLiteral("Do you really want to remove <b>a</b>?");
    QCOMPARE(TMessageBox::askForDelete(nullptr, text, offer, &all), expected);
    QCOMPARE(all, applyToAll);
    QCOMPARE(m_questions.size(), 1);
    QCOMPARE(m_questions[0].kind, QStringLiteral("askForDelete"));
    QCOMPARE(m_questions[0].text, text);
    QCOMPARE(m_questions[0].offered, offer);

    // A caller that does not want the state passes null.
    QCOMPARE(TMessageBox::askForDelete(nullptr, text, offer, nullptr), expected);
}

void TestTMessageBox::deleteBoxOffersCheckBoxOnlyWhenAsked()
{
    const QString text = QStringLiteral("Do you really want to remove <b>a &amp; b</b>?");
    std::unique_ptr<QMessageBox> box(TMessageBox::createDeleteBox(nullptr, text, true));
    box->open();
    QVERIFY(QTest::qWaitForWindowExposed(box.get()));
    QCOMPARE(box->textFormat(), Qt::RichText);
    QCOMPARE(box->text(), text);
    QVERIFY(box->checkBox());
    QVERIFY(box->checkBox()->isVisible());
    QCOMPARE(box->checkBox()->text(), QStringLiteral("Apply to all"));
    QVERIFY(!box->checkBox()->isChecked());
    QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box->escapeButton(), static_cast<QAbstractButton*>(box->button(QMessageBox::No)));
    box->close();

    std::unique_ptr<QMessageBox> single(TMessageBox::createDeleteBox(nullptr, text, false));
    single->open();
    QVERIFY(QTest::qWaitForWindowExposed(single.get()));
    QVERIFY(!single->checkBox());
    QVERIFY(single->findChildren<QCheckBox*>().isEmpty());
    single->close();
}

void TestTMessageBox::checkBoxTextInFrench()
{
    TTranslator::setLanguage(TTranslator::French);
    std::unique_ptr<QMessageBox> box(TMessageBox::createDeleteBox(nullptr, QStringLiteral("?"), true));
    QVERIFY(box->checkBox());
    QCOMPARE(box->checkBox()->text(), QStringLiteral("Appliquer à tous"));
}

void TestTMessageBox::modalDeleteBoxAnswers_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("applyToAll");

    QTest::newRow("yes with the box ticked") << "tick+yes" << 0 << true;
    QTest::newRow("no") << "no" << 1 << false;
    QTest::newRow("escape is no") << "escape" << 1 << false;
}

void TestTMessageBox::modalDeleteBoxAnswers()
{
    QFETCH(QString, action);
    QFETCH(int, expected);
    QFETCH(bool, applyToAll);

    // Plays the person in front of the real modal dialog.
    bool seen = false;
    QTimer player;
    player.setInterval(10);
    connect(&player, &QTimer::timeout, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible() || seen)
            return;
        seen = true;
        if (action.startsWith(QLatin1String("tick")))
            box->checkBox()->setChecked(true);
        if (action.endsWith(QLatin1String("yes")))
            box->button(QMessageBox::Yes)->click();
        else if (action == QLatin1String("no"))
            box->button(QMessageBox::No)->click();
        else
            QTest::keyClick(box, Qt::Key_Escape);
    });
    player.start();
    bool all = !applyToAll;
    QCOMPARE(TMessageBox::askForDelete(nullptr, QStringLiteral("Remove?"), true, &all), expected);
    QVERIFY(seen);
    QCOMPARE(all, applyToAll);
}

QTEST_MAIN(TestTMessageBox)
#include "tst_tmessagebox.moc"
