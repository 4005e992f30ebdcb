#include "kaobject2project.h"
#include "kaprojectdialog.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "testfixture.h"
#include "ttranslator.h"

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

struct Header {
    QString name;
    QString description;
    int state = -1;
};

// The header as the database file holds it.
Header headerOnDisk(const QString& folder)
{
    Header header;
    QString error;
    if (!TechDB::TDatabase::readProjectHeader(folder, &header.name, &header.description, &header.state, &error))
        qWarning("header not read: %s", qPrintable(error));
    return header;
}

ProjectMgrInterface* manager()
{
    return ProjectMgrInterface::returnMe();
}

QStringList loggedAt(MessageLoggerInterface::Level level)
{
    QStringList texts;
    for (const MessageLoggerInterface::Entry& entry : MessageLoggerInterface::returnMe()->entries()) {
        if (entry.level == level)
            texts.append(entry.text);
    }
    return texts;
}

// Finds the dialog's widgets by name and uses them as a user would.
class DialogDriver
{
public:
    explicit DialogDriver(KAProjectDialog* dialog) : m_dialog(dialog) {}
    template<typename W>
    W* widget(const char* name) const { return m_dialog->findChild<W*>(QLatin1String(name)); }
    QLineEdit* name() const { return widget<QLineEdit>("kaProjectName"); }
    QPlainTextEdit* description() const { return widget<QPlainTextEdit>("kaProjectDescription"); }
    QComboBox* state() const { return widget<QComboBox>("kaProjectState"); }
    QListWidget* list() const { return widget<QListWidget>("kaProjectList"); }

    bool show() const
    {
        m_dialog->show();
        return QTest::qWaitForWindowExposed(m_dialog);
    }
    // Typed as a user would: select all, then type (ASCII only: the test
    // keyboard knows no other keys).
    void typeName(const QString& text) const
    {
        name()->setFocus();
        name()->selectAll();
        if (text.isEmpty())
            QTest::keyClick(name(), Qt::Key_Delete);
        else
            QTest::keyClicks(name(), text);
    }
    void setState(int value) const { state()->setCurrentIndex(state()->findData(value)); }
    void clickOk() const
    {
        QTest::mouseClick(widget<QDialogButtonBox>("kaProjectButtons")->button(QDialogButtonBox::Ok), Qt::LeftButton);
    }

private:
    KAProjectDialog* m_dialog; // not owned
};

} // namespace

class TestKAProjectDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void savesToTheDatabase_data();
    void savesToTheDatabase();
    void severalProjectsEditedTogether();
    void emptyNameRefused_data();
    void emptyNameRefused();
    void readOnlyWriteRefused_data();
    void readOnlyWriteRefused();
    void unknownStateKept();
    void stateLabels_data();
    void stateLabels();

private:
    // A project of the fixture known to the project manager, closed.
    const KAObject2Project* project(const QString& name);

    std::unique_ptr<TestFixture> m_fixture;
};

void TestKAProjectDialog::initTestCase()
{
    kaInitTestEnvironment();
}

void TestKAProjectDialog::init()
{
    MessageLoggerInterface::returnMe()->clear();
    m_fixture.reset(new TestFixture);
    manager()->setWorkspaceFolders({m_fixture->path()});
}

void TestKAProjectDialog::cleanup()
{
    manager()->closeAll();
    manager()->setWorkspaceFolders({});
    m_fixture.reset();
}

const KAObject2Project* TestKAProjectDialog::project(const QString& name)
{
    const QString folder = m_fixture->makeProject(name);
    if (folder.isEmpty())
        return nullptr;
    return manager()->discoverProject(folder);
}

void TestKAProjectDialog::savesToTheDatabase_data()
{
    QTest::addColumn<bool>("open");

    QTest::newRow("open project") << true;
    QTest::newRow("closed project, opened for the write") << false;
}

void TestKAProjectDialog::savesToTheDatabase()
{
    QFETCH(bool, open);

    const KAObject2Project* alpha = project(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    if (open)
        QVERIFY(manager()->openProject(alpha));

    KAProjectDialog dialog({alpha}, nullptr);
    DialogDriver driver(&dialog);
    QVERIFY(!driver.list());
    QVERIFY(driver.show());
    QCOMPARE(driver.name()->text(), QStringLiteral("Alpha"));
    const QString name = QStringLiteral("Alpha <b>& co");
    const QString description = QStringLiteral("Stability study\nsecond batch");
    driver.typeName(name);
    driver.description()->setPlainText(description);
    driver.setState(KAObject2Project::StateValidated);
    driver.clickOk();

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
    QVERIFY(loggedAt(MessageLoggerInterface::LevelError).isEmpty());
    QCOMPARE(alpha->name(), name);
    QCOMPARE(alpha->description(), description);
    QCOMPARE(alpha->projectState(), int(KAObject2Project::StateValidated));
    QCOMPARE(manager()->isOpen(alpha), open);

    const Header header = headerOnDisk(alpha->folder());
    QCOMPARE(header.name, name);
    QCOMPARE(header.description, description);
    QCOMPARE(header.state, int(KAObject2Project::StateValidated));
}

// Edits of each project are kept while the user moves through the list;
// OK saves every changed project and only those.
void TestKAProjectDialog::severalProjectsEditedTogether()
{
    const KAObject2Project* alpha = project(QStringLiteral("Alpha"));
    const KAObject2Project* beta = project(QStringLiteral("Beta"));
    const KAObject2Project* gamma = project(QStringLiteral("Gamma"));
    QVERIFY(alpha && beta && gamma);
    const Header gammaBefore = headerOnDisk(gamma->folder());

    KAProjectDialog dialog({alpha, beta, gamma}, nullptr);
    DialogDriver driver(&dialog);
    QVERIFY(driver.show());
    QVERIFY(driver.list());
    QCOMPARE(driver.list()->count(), 3);
    QCOMPARE(dialog.currentProject(), 0);
    driver.typeName(QStringLiteral("Alpha 2"));
    QCOMPARE(driver.list()->item(0)->text(), QStringLiteral("Alpha 2"));

    driver.list()->setCurrentRow(1);
    QCOMPARE(dialog.currentProject(), 1);
    QCOMPARE(driver.name()->text(), QStringLiteral("Beta"));
    QCOMPARE(driver.widget<QLineEdit>("kaProjectFolder")->text(), QDir::toNativeSeparators(beta->folder()));
    driver.setState(KAObject2Project::StateArchived);

    driver.list()->setCurrentRow(0);
    QCOMPARE(driver.name()->text(), QStringLiteral("Alpha 2"));
    QCOMPARE(driver.state()->currentData().toInt(), int(KAObject2Project::StateInProgress));
    driver.clickOk();

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(headerOnDisk(alpha->folder()).name, QStringLiteral("Alpha 2"));
    QCOMPARE(headerOnDisk(beta->folder()).name, QStringLiteral("Beta"));
    QCOMPARE(headerOnDisk(beta->folder()).state, int(KAObject2Project::StateArchived));
    const Header gammaAfter = headerOnDisk(gamma->folder());
    QCOMPARE(gammaAfter.name, gammaBefore.name);
    QCOMPARE(gammaAfter.description, gammaBefore.description);
    QCOMPARE(gammaAfter.state, gammaBefore.state);
    QVERIFY(!manager()->isOpen(alpha) && !manager()->isOpen(beta) && !manager()->isOpen(gamma));
}

void TestKAProjectDialog::emptyNameRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("ofSecondProject");

    QTest::newRow("empty name") << QString() << false;
    QTest::newRow("spaces only") << QStringLiteral("   ") << false;
    QTest::newRow("empty name of a project not shown") << QString() << true;
}

void TestKAProjectDialog::emptyNameRefused()
{
    QFETCH(QString, name);
    QFETCH(bool, ofSecondProject);

    const KAObject2Project* alpha = project(QStringLiteral("Alpha"));
    const KAObject2Project* beta = project(QStringLiteral("Beta"));
    QVERIFY(alpha && beta);
    KAProjectDialog dialog({alpha, beta}, nullptr);
    DialogDriver driver(&dialog);
    QVERIFY(driver.show());
    // A valid change of the first project is not saved either: nothing is
    // written while a name is refused.
    driver.description()->setPlainText(QStringLiteral("changed"));
    if (ofSecondProject)
        driver.list()->setCurrentRow(1);
    driver.typeName(name);
    if (ofSecondProject)
        driver.list()->setCurrentRow(0);
    driver.clickOk();

    QVERIFY(dialog.isVisible());
    QVERIFY(dialog.result() != QDialog::Accepted);
    QCOMPARE(dialog.currentProject(), ofSecondProject ? 1 : 0);
    QCOMPARE(dialog.message(), QStringLiteral("The project name cannot be empty."));
    QCOMPARE(loggedAt(MessageLoggerInterface::LevelWarning),
             QStringList{QStringLiteral("The project name cannot be empty.")});
    QCOMPARE(headerOnDisk(alpha->folder()).name, QStringLiteral("Alpha"));
    QVERIFY(headerOnDisk(alpha->folder()).description != QLatin1String("changed"));
    QCOMPARE(headerOnDisk(beta->folder()).name, QStringLiteral("Beta"));
    QCOMPARE(alpha->name(), QStringLiteral("Alpha"));
}

void TestKAProjectDialog::readOnlyWriteRefused_data()
{
    QTest::addColumn<bool>("afterWritable");

    QTest::newRow("alone") << false;
    QTest::newRow("after a writable project") << true;
}

// A project open read-only refuses the write: the database's message is
// logged once and shown, the dialog stays open on that project, projects
// saved before it stay saved.
void TestKAProjectDialog::readOnlyWriteRefused()
{
    QFETCH(bool, afterWritable);

    const KAObject2Project* writable = project(QStringLiteral("Alpha"));
    const KAObject2Project* readOnly = project(QStringLiteral("Beta"));
    QVERIFY(writable && readOnly);
    QVERIFY(manager()->openProject(readOnly, true));
    QVERIFY(readOnly->db()->isReadOnly());

    QList<const KAObject2Project*> projects{readOnly};
    if (afterWritable)
        projects.prepend(writable);
    KAProjectDialog dialog(projects, nullptr);
    DialogDriver driver(&dialog);
    QVERIFY(driver.show());
    if (afterWritable) {
        driver.typeName(QStringLiteral("Alpha saved"));
        driver.list()->setCurrentRow(1);
    }
    driver.typeName(QStringLiteral("Beta renamed"));
    driver.clickOk();

    QVERIFY(dialog.isVisible());
    QVERIFY(dialog.result() != QDialog::Accepted);
    QCOMPARE(dialog.currentProject(), afterWritable ? 1 : 0);
    const QStringList errors = loggedAt(MessageLoggerInterface::LevelError);
    QCOMPARE(errors.size(), 1);
    QCOMPARE(errors.first(), readOnly->db()->lastError());
    QVERIFY2(errors.first().contains(QLatin1String("read-only")), qPrintable(errors.first()));
    QCOMPARE(dialog.message(), errors.first());
    QCOMPARE(readOnly->name(), QStringLiteral("Beta"));
    QCOMPARE(headerOnDisk(readOnly->folder()).name, QStringLiteral("Beta"));
    if (afterWritable)
        QCOMPARE(headerOnDisk(writable->folder()).name, QStringLiteral("Alpha saved"));

    // The user gives up: nothing more is written.
    dialog.reject();
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(headerOnDisk(readOnly->folder()).name, QStringLiteral("Beta"));
}

// A state this version does not name is shown as such and kept when only
// the description changes.
void TestKAProjectDialog::unknownStateKept()
{
    const KAObject2Project* alpha = project(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    QVERIFY(manager()->openProject(alpha));
    QVERIFY(alpha->db()->setProjectProperties(QStringLiteral("Alpha"), QStringLiteral("old"), 5));

    KAProjectDialog dialog({alpha}, nullptr);
    DialogDriver driver(&dialog);
    QCOMPARE(driver.state()->currentText(), QStringLiteral("Unknown state (5)"));
    driver.description()->setPlainText(QStringLiteral("new"));
    dialog.accept();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(headerOnDisk(alpha->folder()).state, 5);
    QCOMPARE(headerOnDisk(alpha->folder()).description, QStringLiteral("new"));
}

void TestKAProjectDialog::stateLabels_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("english");
    QTest::addColumn<QString>("french");

    QTest::newRow("in progress") << 0 << QStringLiteral("In progress") << QStringLiteral("En cours");
    QTest::newRow("validated") << 1 << QStringLiteral("Validated") << QStringLiteral("Validé");
    QTest::newRow("archived") << 2 << QStringLiteral("Archived") << QStringLiteral("Archivé");
    QTest::newRow("locked") << 3 << QStringLiteral("Locked") << QStringLiteral("Verrouillé");
    QTest::newRow("terminated") << 4 << QStringLiteral("Terminated") << QStringLiteral("Terminé");
    QTest::newRow("terminated and archived") << 7 << QStringLiteral("Terminated and archived")
                                             << QStringLiteral("Terminé et archivé");
}

void TestKAProjectDialog::stateLabels()
{
    QFETCH(int, state);
    QFETCH(QString, english);
    QFETCH(QString, french);

    const KAObject2Project* alpha = project(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    KAProjectDialog dialog({alpha}, nullptr);
    QComboBox* combo = DialogDriver(&dialog).state();
    QCOMPARE(combo->count(), 6);
    const int row = combo->findData(state);
    QVERIFY(row >= 0);
    QCOMPARE(combo->itemText(row), english);
    QCOMPARE(KAProjectDialog::states().indexOf(state), row);

    TTranslator::setLanguage(TTranslator::French);
    const QString translated = KAProjectDialog::stateName(state);
    TTranslator::setLanguage(TTranslator::English);
    QCOMPARE(translated, french);
}

QTEST_MAIN(TestKAProjectDialog)
#include "tst_kaprojectdialog.moc"
