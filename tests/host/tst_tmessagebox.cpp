#include "testfixture.h"
#include "tmessagebox.h"
#include "ttranslator.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

class TestTMessageBox : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanup() { TMessageBox::setAnswerProvider({}); TTranslator::setLanguage(TTranslator::English); }

    void seamAnswers();
    void realDialogAnswers_data();
    void realDialogAnswers();
};

// The seam sees the kind and the rich text of each question; what it gives
// back is mapped onto the answers the dialog itself could give.
void TestTMessageBox::seamAnswers()
{
    QStringList asked;
    int given = 7;
    TMessageBox::setAnswerProvider([&](const QString& kind, const QString& text, bool* all) {
        asked << kind + QLatin1Char(':') + text + (all ? QStringLiteral("+box") : QString());
        if (all)
            *all = true;
        return given;
    });
    const QString text = QStringLiteral("Remove <b>Run &lt;1&gt;</b>?");
    QCOMPARE(TMessageBox::questionYesNo(nullptr, QStringLiteral("Title"), text), 1);
    given = -1;
    QCOMPARE(TMessageBox::questionYesNoCancel(nullptr, QStringLiteral("Title"), text), 2);
    given = 1;
    bool all = false;
    QCOMPARE(TMessageBox::askForDelete(nullptr, text, true, &all), 1);
    QVERIFY(all);
    // A caller that does not want the state passes null.
    QCOMPARE(TMessageBox::askForDelete(nullptr, text, true, nullptr), 1);
    QCOMPARE(asked, QStringList({"questionYesNo:" + text, "questionYesNoCancel:" + text, "askForDelete:" + text + "+box",
                                 "askForDelete:" + text + "+box"}));
}

void TestTMessageBox::realDialogAnswers_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("offer");

    QTest::newRow("yes with the box ticked") << "tick+yes" << true;
    QTest::newRow("escape is no") << "escape" << true;
    QTest::newRow("one item: no box") << "yes" << false;
}

// Plays the person in front of the real modal dialog, in French for the
// box's label.
void TestTMessageBox::realDialogAnswers()
{
    QFETCH(QString, action);
    QFETCH(bool, offer);

    const QString text = QStringLiteral("Do you really want to remove <b>a &amp; b</b>?");
    QStringList seen; // text, format and check box label of the dialog shown
    QTimer player;
    connect(&player, &QTimer::timeout, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible() || !seen.isEmpty())
            return;
        seen << box->text() << QString::number(box->textFormat());
        for (QCheckBox* check : box->findChildren<QCheckBox*>())
            seen << check->text();
        if (action.startsWith(QLatin1String("tick")))
            box->checkBox()->setChecked(true);
        if (action.endsWith(QLatin1String("yes")))
            box->button(QMessageBox::Yes)->click();
        else
            QTest::keyClick(box, Qt::Key_Escape);
    });
    player.start(10);
    TTranslator::setLanguage(TTranslator::French);
    bool all = !offer;
    QCOMPARE(TMessageBox::askForDelete(nullptr, text, offer, &all), action.endsWith(QLatin1String("yes")) ? 0 : 1);
    QStringList shown{text, QString::number(Qt::RichText)};
    QCOMPARE(seen, offer ? shown << QStringLiteral("Appliquer à tous") : shown);
    QCOMPARE(all, action == QLatin1String("tick+yes"));
}

QTEST_MAIN(TestTMessageBox)
#include "tst_tmessagebox.moc"
