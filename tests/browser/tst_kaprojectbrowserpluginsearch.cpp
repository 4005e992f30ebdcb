#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowserpluginsearch.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "messageloggerinterface.h"
#include "projecttreehelpers.h"
#include "tapplicationdata.h"
#include "testfixture.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QSet>
#include <QTest>

#include <memory>

using namespace TreeTest;

namespace {

// Names live in memory only: enough for a search, which reads the objects.
void rename(Node* node, const QString& name)
{
    const_cast<KAObject2*>(node->data())->setName(name);
}

QList<Node*> allNodes(Node* start)
{
    QList<Node*> nodes{start};
    for (Node* c = start->firstChild(); c; c = c->nextSibling())
        nodes += allNodes(c);
    return nodes;
}

// The subtree as nested names, "Results(Analysis(Run 1(Trace 1)))", children sorted.
QString shape(const Node* node)
{
    QStringList children;
    for (const Node* c : childNodes(node))
        children << shape(c);
    children.sort();
    return node->data()->name() + (children.isEmpty() ? QString() : '(' + children.join(", ") + ')');
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

// The saved-searches plug-in on a generated project: what a search finds,
// how it is arranged, and the saved searches file.
class tst_KAProjectBrowserPluginSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        m_ctrl.reset(); // before the project it shows
        m_fixture.reset(new TestFixture);
        m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"));
        QVERIFY(m_project);
        m_ctrl.reset(new KAProjectBrowserCtrl);
        m_ctrl->init(&m_filter, m_project, true);
        MessageLoggerInterface::returnMe()->clear();
    }
    void cleanup() { TApplicationData::getInstance()->setCurrentProjectReadOnly(false); }

    void resultsStandUnderTheirCategoryWithTheirParents()
    {
        // A signal is shown under its analysis, in the expanded "Analysis" folder.
        Node* signal = nodesOfType(m_ctrl->getTree(KAObjectTypeAnalysis), KAObjectTypeSignal).value(0);
        rename(signal, QStringLiteral("Zebrafish trace"));
        QCOMPARE(found("zebrafish"), "Results(Analysis(" + signal->parent()->data()->name() + "(Zebrafish trace)))");
        QVERIFY(results()->firstChild()->isExpanded());
        // Variables are shown under their dataset, under its well.
        Node* dataset = nodesOfType(m_ctrl->getTree(KAObjectTypeWell), KAObjectTypeDataset).value(0);
        const QList<Node*> variables = nodesOfType(dataset, KAObjectTypeVariable);
        QVERIFY(variables.size() >= 2);
        rename(variables.at(0), QStringLiteral("Gamma ray A"));
        rename(variables.at(1), QStringLiteral("Gamma ray B"));
        QCOMPARE(found("gamma RAY"), QStringLiteral("Results(Numerical arrays(%1(%2(Gamma ray A, Gamma ray B))))")
                                         .arg(dataset->parent()->data()->name(), dataset->data()->name()));
        // A search of the identifications (kind 530) lists them with no category folder.
        const auto groups = nodesOfType(m_ctrl->getTree(KAObjectTypeIdentifications), KAObjectTypeIdentificationGroup);
        rename(groups.value(0), QStringLiteral("Quokka library hit"));
        QCOMPARE(found("QUOKKA", KAObjectTypeIdentificationsFolder), QStringLiteral("Results(Quokka library hit)"));
    }

    void matchesLikeContainsIgnoringCaseNeverFolders()
    {
        const QList<Node*> analyses = nodesOfType(m_ctrl->getTree(KAObjectTypeAnalysis), KAObjectTypeAnalysis);
        QVERIFY(analyses.size() >= 4);
        const QStringList names{"Échantillon", "ΣΑΜΠΛΕ", "Проба 2", "straße xAbCx été"};
        for (int i = 0; i < names.size(); ++i)
            rename(analyses.at(i), names.at(i));
        rename(nodesOfType(analyses.at(0), KAObjectTypeSignal).value(0), QStringLiteral("Пробоотбор σήμα"));
        // A signal that matches under an analysis that matches too.
        rename(nodesOfType(analyses.at(3), KAObjectTypeSignal).value(0), QStringLiteral("Signal XABCX"));
        // Folders, default and the user's, whose names must never match.
        for (KAObjectType branch : {KAObjectTypeAnalysis, KAObjectTypeWell, KAObjectTypeIdentifications})
            QVERIFY(m_ctrl->createFolder("Inner quux", m_ctrl->createFolder("Quux", m_ctrl->getTree(branch))));
        // Each text, and whether QString's own comparison finds anything.
        const QList<QPair<QString, bool>> texts{
            {"ABC", true},      {"ÉTÉ", true},      {"echantillon", false}, {"Σαμπλε", true}, {"ПРОБ", true},
            {"STRAßE", true},   {"STRAẞE", true},   {"STRASSE", false},    {"quux", false},  {"Numerical", false}};
        for (const auto& [text, found] : texts) {
            const auto isMatch = [&text = text](const Node* n) {
                return n->data()->type() != KAObjectTypeFolder && n->data()->name().contains(text, Qt::CaseInsensitive);
            };
            QSet<const KAObject2*> expected;
            for (Node* n : allNodes(m_ctrl->getTree())) {
                if (isMatch(n))
                    expected.insert(n->data());
            }
            QCOMPARE(!expected.isEmpty(), found);
            // Every object that the results show is a match or an ancestor of one.
            m_ctrl->searchPlugin()->search(text, KAObjectTypeProject);
            QSet<const KAObject2*> matched;
            for (Node* n : allNodes(results()).mid(1)) {
                if (isMatch(n))
                    matched.insert(n->data());
                else
                    QVERIFY2(n->childCount() > 0, qPrintable(text + ": " + n->data()->name() + " leads to no match"));
            }
            QCOMPARE(matched, expected);
        }
    }

    void savedSearchesSurviveReopeningRunOnDoubleClickButNotReadOnly()
    {
        KAProjectBrowserPluginSearch* plugin = m_ctrl->searchPlugin();
        const TApplicationData* data = TApplicationData::getInstance();
        const QString path = QDir(m_project->folder())
                                 .filePath(QStringLiteral("Settings/%1.%2.projectbrowser_saved_search.xml")
                                               .arg(data->userName(), data->applicationName()));
        QCOMPARE(QDir::cleanPath(plugin->savedSearchesPath()), QDir::cleanPath(path));
        for (const char* text : {"Blank", "abc", "Std Mix"}) {
            plugin->search(QLatin1String(text), KAObjectTypeProject);
            plugin->slotSave();
        }
        // <!DOCTYPE saved_search><root version="1.0"><SEARCH><item name str/>..., in name order.
        QDomDocument doc;
        QVERIFY(doc.setContent(contents(path)));
        const QDomElement root = doc.documentElement();
        QCOMPARE(doc.doctype().name() + ' ' + root.tagName() + ' ' + root.attribute("version"),
                 "saved_search root 1.0");
        QCOMPARE(root.childNodes().size(), 1);
        QStringList items;
        const QDomElement search = root.firstChildElement("SEARCH");
        for (QDomElement i = search.firstChildElement(); !i.isNull(); i = i.nextSiblingElement())
            items << i.tagName() + ' ' + i.attribute("name") + '=' + i.attribute("str");
        QCOMPARE(items, (QStringList{"item Blank=Blank", "item Std Mix=Std Mix", "item abc=abc"}));
        // A rename keeps the text; a delete takes the entry out of the file.
        plugin->init();
        QString name = QStringLiteral("Alphabet start");
        QVERIFY(m_ctrl->renameObject(childNamed(plugin->getTree(), "Blank"), name));
        QVERIFY(m_ctrl->deleteObject(childNamed(plugin->getTree(), "abc"), false));
        QCOMPARE(MessageLoggerInterface::returnMe()->texts(), QStringList());
        m_ctrl.reset();
        // A new explorer reads them back when the project opens, not before; a
        // double-click on one runs its text again.
        KAProjectBrowserCtrl ctrl;
        ctrl.init(false, &m_filter);
        plugin = ctrl.searchPlugin();
        QVERIFY(plugin->savedSearches().isEmpty());
        ctrl.projectOpened(); // the host tells of its current project
        QCOMPARE(plugin->savedSearches().value(QStringLiteral("Alphabet start")), QStringLiteral("Blank"));
        KAProjectBrowserTreeWidget* view = ctrl.treeWidget();
        const QList<QTreeWidgetItem*> folders = view->findItems(QStringLiteral("Saved searches"), Qt::MatchExactly);
        QCOMPARE(folders.size(), 1);
        view->resize(300, 400);
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view));
        QTreeWidgetItem* folder = folders.first();
        folder->setExpanded(true);
        QCOMPARE(folder->childCount(), 2);
        QCOMPARE(folder->child(0)->text(0) + ", " + folder->child(1)->text(0), "Alphabet start, Std Mix");
        const QPoint position = view->visualItemRect(folder->child(0)).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, position);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, position);
        QTRY_COMPARE(plugin->searchText(), QStringLiteral("Blank"));
        QTRY_VERIFY(view->updatesEnabled());
        QCOMPARE(view->topLevelItemCount(), 1);
        QCOMPARE(static_cast<KATreeWidgetItem*>(view->topLevelItem(0))->node(), plugin->getTree());
        QVERIFY(view->topLevelItem(0)->childCount() > 0);
        // Read only: a warning, the file left as it was, the change kept in memory.
        const QByteArray before = contents(path);
        TApplicationData::getInstance()->setCurrentProjectReadOnly(true);
        plugin->search(QStringLiteral("abc"), KAObjectTypeProject);
        plugin->slotSave();
        QCOMPARE(MessageLoggerInterface::returnMe()->texts(),
                 QStringList{"The project is read only. The search wil not be saved"});
        QCOMPARE(MessageLoggerInterface::returnMe()->entries().first().level, MessageLoggerInterface::LevelWarning);
        QVERIFY(!before.isEmpty() && contents(path) == before);
        QCOMPARE(QDir(m_project->folder() + "/Settings").entryList({"*saved_search*"}, QDir::Files).size(), 1);
        QCOMPARE(plugin->savedSearches().value(QStringLiteral("abc")), QStringLiteral("abc"));
    }

private:
    Node* results() const { return m_ctrl->searchPlugin()->getTree(); }
    QString found(const QString& text, KAObjectType scope = KAObjectTypeProject) // the results' shape
    {
        m_ctrl->searchPlugin()->search(text, scope);
        return shape(results());
    }

    std::unique_ptr<TestFixture> m_fixture;
    KAProjectBrowserFilterPackage m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
};

QTEST_MAIN(tst_KAProjectBrowserPluginSearch)
#include "tst_kaprojectbrowserpluginsearch.moc"
