#include "kaobject2project.h"
#include "kaprojectdialog.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include <memory>

namespace {

ProjectMgrInterface* manager() { return ProjectMgrInterface::returnMe(); }

// The header as the database file holds it: name, description, state.
QStringList headerOnDisk(const KAObject2Project* project)
{
    QString name, description, error;
    int state = -1;
    return TechDB::TDatabase::readProjectHeader(project->folder(), &name, &description, &state, &error)
        ? QStringList{name, description, QString::number(state)} : QStringList{error};
}

QStringList logged() { return MessageLoggerInterface::returnMe()->texts(); }

// The dialog's widgets found by name and used as a user would.
template<typename W> W* part(KAProjectDialog& dialog, const char* name) { return dialog.findChild<W*>(QLatin1String(name)); }
QLineEdit* nameEdit(KAProjectDialog& d) { return part<QLineEdit>(d, "kaProjectName"); }
QComboBox* stateBox(KAProjectDialog& d) { return part<QComboBox>(d, "kaProjectState"); }
QListWidget* list(KAProjectDialog& d) { return part<QListWidget>(d, "kaProjectList"); }
void setDescription(KAProjectDialog& d, const QString& text) { part<QPlainTextEdit>(d, "kaProjectDescription")->setPlainText(text); }
bool shown(KAProjectDialog& d) { d.show(); return QTest::qWaitForWindowExposed(&d); }

// Typed as a user would: select all, then type (ASCII only: the test
// keyboard knows no other keys).
void typeName(KAProjectDialog& d, const QString& text)
{
    nameEdit(d)->setFocus();
    nameEdit(d)->selectAll();
    text.isEmpty() ? QTest::keyClick(nameEdit(d), Qt::Key_Delete) : QTest::keyClicks(nameEdit(d), text);
}

void clickOk(KAProjectDialog& d) { QTest::mouseClick(part<QDialogButtonBox>(d, "kaProjectButtons")->button(QDialogButtonBox::Ok), Qt::LeftButton); }

} // namespace

class TestKAProjectDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        MessageLoggerInterface::returnMe()->clear();
        m_fixture.reset(new TestFixture);
        manager()->setWorkspaceFolders({m_fixture->path()});
    }
    void cleanup()
    {
        manager()->closeAll();
        manager()->setWorkspaceFolders({});
        m_fixture.reset();
    }

    void editsSavedToTheDatabase();
    void refusedSaveWritesNothing_data();
    void refusedSaveWritesNothing();

private:
    // A project of the fixture known to the project manager, closed.
    const KAObject2Project* project(const QString& name) { return manager()->discoverProject(m_fixture->makeProject(name)); }

    std::unique_ptr<TestFixture> m_fixture;
};

// Edits of each project are kept while the user moves through the list;
// OK saves every changed project, open or closed, and only those. A state
// this version does not name is shown as such and kept.
void TestKAProjectDialog::editsSavedToTheDatabase()
{
    const KAObject2Project *alpha = project(QStringLiteral("Alpha")), *beta = project(QStringLiteral("Beta")),
                           *gamma = project(QStringLiteral("Gamma"));
    QVERIFY(alpha && beta && gamma && manager()->openProject(gamma));
    QVERIFY(gamma->db()->setProjectProperties(QStringLiteral("Gamma"), QStringLiteral("old"), 5));
    const QStringList betaBefore = headerOnDisk(beta);
    const QStringList alphaAfter{QStringLiteral("Alpha <b>& co"), QStringLiteral("Stability study\nsecond batch"),
                                 QString::number(KAObject2Project::StateValidated)};

    KAProjectDialog dialog({alpha, beta, gamma}, nullptr);
    QVERIFY(shown(dialog));
    typeName(dialog, alphaAfter[0]);
    setDescription(dialog, alphaAfter[1]);
    stateBox(dialog)->setCurrentIndex(stateBox(dialog)->findData(KAObject2Project::StateValidated));
    QCOMPARE(list(dialog)->item(0)->text(), alphaAfter[0]);
    list(dialog)->setCurrentRow(1);
    QCOMPARE(part<QLineEdit>(dialog, "kaProjectFolder")->text(), QDir::toNativeSeparators(beta->folder()));
    list(dialog)->setCurrentRow(2);
    QCOMPARE(stateBox(dialog)->currentText(), QStringLiteral("Unknown state (5)"));
    setDescription(dialog, QStringLiteral("new"));
    list(dialog)->setCurrentRow(0);
    QCOMPARE(nameEdit(dialog)->text(), alphaAfter[0]);
    QCOMPARE(stateBox(dialog)->currentData().toInt(), int(KAObject2Project::StateValidated));
    clickOk(dialog);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
    QVERIFY(logged().isEmpty());
    QCOMPARE(headerOnDisk(alpha), alphaAfter);
    QCOMPARE((QStringList{alpha->name(), alpha->description(), QString::number(alpha->projectState())}), alphaAfter);
    QCOMPARE(headerOnDisk(beta), betaBefore);
    QCOMPARE(headerOnDisk(gamma), (QStringList{"Gamma", "new", "5"}));
    QVERIFY(!manager()->isOpen(alpha) && !manager()->isOpen(beta) && manager()->isOpen(gamma));
}

void TestKAProjectDialog::refusedSaveWritesNothing_data()
{
    QTest::addColumn<QString>("name"); // typed for the second project
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<bool>("editFirst");

    QTest::newRow("empty name") << QString() << false << false;
    QTest::newRow("spaces only, first project changed") << QStringLiteral("   ") << false << true;
    QTest::newRow("read-only after a writable project") << QStringLiteral("Beta renamed") << true << true;
}

// A refused name stops the save before anything is written; a read-only
// project refuses its write, projects saved before it staying saved. The
// dialog stays open on the refused project, its message logged once.
void TestKAProjectDialog::refusedSaveWritesNothing()
{
    QFETCH(QString, name);
    QFETCH(bool, readOnly);
    QFETCH(bool, editFirst);

    const KAObject2Project *alpha = project(QStringLiteral("Alpha")), *beta = project(QStringLiteral("Beta"));
    QVERIFY(alpha && beta && (!readOnly || (manager()->openProject(beta, true) && beta->db()->isReadOnly())));
    KAProjectDialog dialog({alpha, beta}, nullptr);
    QVERIFY(shown(dialog));
    if (editFirst)
        typeName(dialog, QStringLiteral("Alpha saved"));
    list(dialog)->setCurrentRow(1);
    typeName(dialog, name);
    if (!readOnly)
        list(dialog)->setCurrentRow(0); // the refused name is of a project not shown
    clickOk(dialog);

    QVERIFY(dialog.isVisible());
    QVERIFY(dialog.result() != QDialog::Accepted);
    QCOMPARE(dialog.currentProject(), 1);
    const QStringList expected = readOnly ? QStringList{beta->db()->lastError()}
                                          : QStringList{QStringLiteral("The project name cannot be empty.")};
    QCOMPARE(logged(), expected);
    QCOMPARE(MessageLoggerInterface::returnMe()->entries().first().level,
             readOnly ? MessageLoggerInterface::LevelError : MessageLoggerInterface::LevelWarning);
    QVERIFY2(!readOnly || expected.first().contains(QLatin1String("read-only")), qPrintable(expected.first()));
    QCOMPARE(dialog.message(), expected.first());
    QCOMPARE(beta->name(), QStringLiteral("Beta"));
    QCOMPARE(headerOnDisk(beta).value(0), QStringLiteral("Beta"));
    QCOMPARE(headerOnDisk(alpha).value(0), readOnly && editFirst ? QStringLiteral("Alpha saved") : QStringLiteral("Alpha"));
}

QTEST_MAIN(TestKAProjectDialog)
#include "tst_kaprojectdialog.moc"
