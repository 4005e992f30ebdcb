#include "kaobject2analysis.h"
#include "kaobject2dataset.h"
#include "kaobject2folder.h"
#include "kaobject2project.h"
#include "kaobject2search.h"
#include "kaobject2searchfolder.h"
#include "kaobject2signal.h"
#include "kaobject2variable.h"
#include "kaobject2well.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowserpluginsearch.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tapplicationdata.h"
#include "testfixture.h"
#include "ttree.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QSet>
#include <QTest>
#include <QTreeWidgetItemIterator>

#include <memory>

using namespace TreeTest;

namespace {

using Saved = QList<QPair<QString, QString>>; // name, str

QSet<const KAObject2*> toSet(const QList<const KAObject2*>& list)
{
    return QSet<const KAObject2*>(list.begin(), list.end());
}

// Names live in memory only: enough for a search, which reads the objects.
void rename(const KAObject2* object, const QString& name)
{
    const_cast<KAObject2*>(object)->setName(name);
}

QList<Node*> allNodes(Node* start)
{
    QList<Node*> nodes;
    if (!start)
        return nodes;
    nodes.append(start);
    for (Node* c = start->firstChild(); c; c = c->nextSibling())
        nodes += allNodes(c);
    return nodes;
}

QList<const KAObject2*> payloads(const QList<Node*>& nodes)
{
    QList<const KAObject2*> objects;
    for (Node* n : nodes)
        objects.append(n->data());
    return objects;
}

// The first node of the subtree holding an object of the database that is
// not a folder nor a placeholder.
Node* firstObjectNode(Node* start)
{
    for (Node* n : allNodes(start)) {
        if (n->data() && n->data()->db() && n->data()->type() != KAObjectTypeFolder
            && n->data()->type() != KAObjectTypeFake)
            return n;
    }
    return nullptr;
}

Saved readSaved(const QString& path, QDomDocument* document = nullptr)
{
    Saved saved;
    QFile file(path);
    QDomDocument doc;
    if (!file.open(QIODevice::ReadOnly) || !doc.setContent(&file))
        return saved;
    const QDomElement searches = doc.documentElement().firstChildElement(QStringLiteral("SEARCH"));
    for (QDomElement e = searches.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        saved.append({e.attribute(QStringLiteral("name")), e.attribute(QStringLiteral("str"))});
    if (document)
        *document = doc;
    return saved;
}

QStringList topTexts(QTreeWidget* view)
{
    QStringList texts;
    for (int i = 0; i < view->topLevelItemCount(); ++i)
        texts.append(view->topLevelItem(i)->text(0));
    return texts;
}

} // namespace

// The saved-searches plug-in on a generated project: what a search finds
// and how it is arranged, and the saved searches file.
class tst_KAProjectBrowserPluginSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void signalOfOneAnalysis();
    void identificationsStandUnderResults();
    void folderNamesNeverMatch_data();
    void folderNamesNeverMatch();
    void matchesLikeContainsIgnoringCase_data();
    void matchesLikeContainsIgnoringCase();
    void variablesOfOneDataset();

    void saveWritesFile();
    void renameDeleteAndReadBack();
    void readOnlyProjectWritesNothing();
    void doubleClickRunsSavedSearch();

private:
    void makeCtrl();
    Node* results() const { return plugin()->getTree(); }
    KAProjectBrowserPluginSearch* plugin() const { return m_ctrl->searchPlugin(); }
    void saveSearches(const QStringList& texts);
    QList<MessageLoggerInterface::Entry> errors() const;

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
};

void tst_KAProjectBrowserPluginSearch::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserPluginSearch::init()
{
    m_fixture.reset(new TestFixture);
    m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"));
    QVERIFY(m_project);
    TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
    m_filter.reset(new KAProjectBrowserFilterPackage);
    makeCtrl();
    QVERIFY(!QFile::exists(plugin()->savedSearchesPath()));
    MessageLoggerInterface::returnMe()->clear();
}

void tst_KAProjectBrowserPluginSearch::cleanup()
{
    TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
    m_ctrl.reset();
    m_filter.reset();
    m_fixture.reset();
    m_project = nullptr;
}

void tst_KAProjectBrowserPluginSearch::makeCtrl()
{
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(m_filter.get(), m_project, true);
    QVERIFY(plugin());
    QVERIFY(m_ctrl->getTree());
}

void tst_KAProjectBrowserPluginSearch::saveSearches(const QStringList& texts)
{
    for (const QString& text : texts) {
        plugin()->search(text, KAObjectTypeProject);
        plugin()->slotSave();
    }
}

QList<MessageLoggerInterface::Entry> tst_KAProjectBrowserPluginSearch::errors() const
{
    QList<MessageLoggerInterface::Entry> result;
    for (const MessageLoggerInterface::Entry& e : MessageLoggerInterface::returnMe()->entries()) {
        if (e.level == MessageLoggerInterface::LevelError)
            result.append(e);
    }
    return result;
}

void tst_KAProjectBrowserPluginSearch::signalOfOneAnalysis()
{
    Node* signal = nodesOfType(m_ctrl->getTree(KAObjectTypeAnalysis), KAObjectTypeSignal).value(0);
    QVERIFY(signal);
    const auto* analysis = static_cast<const KAObject2Signal*>(signal->data())->analysis();
    QVERIFY(analysis);
    rename(signal->data(), QStringLiteral("Zebrafish trace"));

    plugin()->search(QStringLiteral("zebrafish"), KAObjectTypeProject);
    Node* root = results();
    QVERIFY(root);
    QCOMPARE(int(root->data()->type()), int(KAObjectTypeSearchFolder));
    QCOMPARE(root->data()->name(), QStringLiteral("Results"));
    QVERIFY(static_cast<const KAObject2SearchFolder*>(root->data())->isResults());

    QCOMPARE(childNames(root), QStringList{"Analysis"});
    Node* category = root->firstChild();
    QCOMPARE(int(category->data()->type()), int(KAObjectTypeFolder));
    const auto* folder = static_cast<const KAObject2Folder*>(category->data());
    QCOMPARE(int(folder->folderKind()), int(KAObjectTypeAnalysisFolder));
    QCOMPARE(folder->getAllowedVisualReparentType(), QList<KAObjectType>{KAObjectTypeAnalysis});
    QVERIFY(category->isExpanded());
    QCOMPARE(payloads(childNodes(category)), QList<const KAObject2*>{analysis});
    QCOMPARE(payloads(childNodes(category->firstChild())), QList<const KAObject2*>{signal->data()});
    QCOMPARE(category->firstChild()->firstChild()->childCount(), 0);
}

void tst_KAProjectBrowserPluginSearch::identificationsStandUnderResults()
{
    Node* identification = firstObjectNode(m_ctrl->getTree(KAObjectTypeIdentifications));
    QVERIFY(identification);
    rename(identification->data(), QStringLiteral("Quokka library hit"));
    Node* analysis = nodesOfType(m_ctrl->getTree(KAObjectTypeAnalysis), KAObjectTypeAnalysis).value(0);
    QVERIFY(analysis);
    rename(analysis->data(), QStringLiteral("Quokka run"));

    plugin()->search(QStringLiteral("QUOKKA"), KAObjectTypeIdentificationsFolder);
    QCOMPARE(payloads(childNodes(results())), QList<const KAObject2*>{identification->data()});

    plugin()->search(QStringLiteral("QUOKKA"), KAObjectTypeProject);
    QVERIFY2(payloads(childNodes(results())).contains(identification->data()),
             "the identification stands directly under the results");
    Node* category = childFolder(results(), QStringLiteral("Analysis"));
    QVERIFY(category);
    QCOMPARE(payloads(childNodes(category)), QList<const KAObject2*>{analysis->data()});
}

void tst_KAProjectBrowserPluginSearch::folderNamesNeverMatch_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("kind");
    QTest::newRow("default branch, all kinds") << QStringLiteral("Numerical arrays") << int(KAObjectTypeProject);
    QTest::newRow("default branch, its kind") << QStringLiteral("Numerical") << int(KAObjectTypeWell);
    QTest::newRow("user folders, all kinds") << QStringLiteral("quux") << int(KAObjectTypeProject);
    QTest::newRow("user folder, analyses") << QStringLiteral("QUUX") << int(KAObjectTypeAnalysis);
    QTest::newRow("user folder, identifications") << QStringLiteral("Quux") << int(KAObjectTypeIdentificationsFolder);
}

void tst_KAProjectBrowserPluginSearch::folderNamesNeverMatch()
{
    QFETCH(QString, text);
    QFETCH(int, kind);
    for (KAObjectType branch : {KAObjectTypeAnalysis, KAObjectTypeWell, KAObjectTypeGlobalIndexation,
                                KAObjectTypeIdentifications}) {
        Node* folder = m_ctrl->createFolder(QStringLiteral("Quux"), m_ctrl->getTree(branch));
        QVERIFY(folder);
        QVERIFY(m_ctrl->createFolder(QStringLiteral("Inner quux"), folder));
    }
    // No object of the project carries the text.
    for (Node* n : allNodes(m_ctrl->getTree())) {
        if (n->data() && n->data()->type() != KAObjectTypeFolder)
            QVERIFY2(!n->data()->name().contains(text, Qt::CaseInsensitive), qPrintable(n->data()->name()));
    }
    plugin()->search(text, KAObjectType(kind));
    QVERIFY(results());
    QCOMPARE(childNames(results()), QStringList());
}

void tst_KAProjectBrowserPluginSearch::matchesLikeContainsIgnoringCase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("found"); // whether the reference finds anything
    const int all = KAObjectTypeProject;
    QTest::newRow("capitals find small letters") << QStringLiteral("ABC") << int(KAObjectTypeAnalysis) << true;
    QTest::newRow("small letters find capitals") << QStringLiteral("abc") << int(KAObjectTypeAnalysis) << true;
    QTest::newRow("mixed") << QStringLiteral("aBc") << int(KAObjectTypeAnalysis) << true;
    QTest::newRow("accented capitals") << QStringLiteral("ÉTÉ") << int(KAObjectTypeAnalysis) << true;
    QTest::newRow("accented, small") << QStringLiteral("échantillon") << all << true;
    QTest::newRow("accented, capitals") << QStringLiteral("ÉCHANTILLON") << all << true;
    QTest::newRow("accent left out") << QStringLiteral("echantillon") << all << false;
    QTest::newRow("greek, small") << QStringLiteral("σαμπλε") << all << true;
    QTest::newRow("greek, mixed") << QStringLiteral("Σαμπλε") << all << true;
    QTest::newRow("cyrillic, small") << QStringLiteral("проба") << all << true;
    QTest::newRow("cyrillic, capitals") << QStringLiteral("ПРОБА") << all << true;
    QTest::newRow("sharp s, capitals around") << QStringLiteral("STRAßE") << all << true;
    QTest::newRow("capital sharp s") << QStringLiteral("STRAẞE") << all << true;
    QTest::newRow("sharp s spelt ss") << QStringLiteral("STRASSE") << all << false;
    QTest::newRow("cyrillic prefix of two names") << QStringLiteral("ПРОБ") << all << true;
}

void tst_KAProjectBrowserPluginSearch::matchesLikeContainsIgnoringCase()
{
    QFETCH(QString, text);
    QFETCH(int, kind);
    QFETCH(bool, found);
    const QList<Node*> analyses = nodesOfType(m_ctrl->getTree(KAObjectTypeAnalysis), KAObjectTypeAnalysis);
    QVERIFY(analyses.size() >= 4);
    const QStringList names{QStringLiteral("Échantillon"), QStringLiteral("ΣΑΜΠΛΕ"), QStringLiteral("Проба 2"),
                            QStringLiteral("straße xAbCx été")};
    for (int i = 0; i < names.size(); ++i)
        rename(analyses.at(i)->data(), names.at(i));
    Node* signal = nodesOfType(analyses.at(0), KAObjectTypeSignal).value(0);
    QVERIFY(signal);
    rename(signal->data(), QStringLiteral("Пробоотбор σήμα"));
    // A signal that matches under an analysis that matches too.
    Node* matchingSignal = nodesOfType(analyses.at(3), KAObjectTypeSignal).value(0);
    QVERIFY(matchingSignal);
    rename(matchingSignal->data(), QStringLiteral("Signal XABCX"));

    // The reference: every object of the searched trees whose name contains
    // the text, compared the way QString does it.
    const QList<KAObjectType> trees = kind == KAObjectTypeProject
        ? QList<KAObjectType>{KAObjectTypeAnalysis, KAObjectTypeGlobalIndexation, KAObjectTypeWell,
                              KAObjectTypeIdentifications}
        : QList<KAObjectType>{KAObjectType(kind)};
    QSet<const KAObject2*> expected;
    for (KAObjectType tree : trees) {
        for (Node* n : allNodes(m_ctrl->getTree(tree))) {
            if (n->data() && n->data()->type() != KAObjectTypeFolder
                && n->data()->name().contains(text, Qt::CaseInsensitive))
                expected.insert(n->data());
        }
    }
    QCOMPARE(!expected.isEmpty(), found);

    plugin()->search(text, KAObjectType(kind));
    QSet<const KAObject2*> matched;
    QSet<const KAObject2*> shown;
    for (Node* category : childNodes(results())) {
        const bool isCategory = category->data()->type() == KAObjectTypeFolder;
        for (Node* n : isCategory ? allNodes(category).mid(1) : allNodes(category)) {
            // A match that also gives context to another is shown once.
            QVERIFY2(!shown.contains(n->data()), qPrintable(n->data()->name()));
            shown.insert(n->data());
            if (n->data()->name().contains(text, Qt::CaseInsensitive))
                matched.insert(n->data());
            else
                QVERIFY2(n->childCount() > 0, qPrintable(QStringLiteral("\"%1\" neither matches nor gives context")
                                                              .arg(n->data()->name())));
        }
    }
    QCOMPARE(matched, expected);
}

void tst_KAProjectBrowserPluginSearch::variablesOfOneDataset()
{
    Node* dataset = nullptr;
    for (Node* n : nodesOfType(m_ctrl->getTree(KAObjectTypeWell), KAObjectTypeDataset)) {
        if (nodesOfType(n, KAObjectTypeVariable).size() >= 2) {
            dataset = n;
            break;
        }
    }
    QVERIFY(dataset);
    const QList<Node*> variables = nodesOfType(dataset, KAObjectTypeVariable);
    rename(variables.at(0)->data(), QStringLiteral("Gamma ray A"));
    rename(variables.at(1)->data(), QStringLiteral("Gamma ray B"));
    const auto* well = static_cast<const KAObject2Dataset*>(dataset->data())->well();
    QVERIFY(well);

    plugin()->search(QStringLiteral("gamma RAY"), KAObjectTypeProject);
    QCOMPARE(childNames(results()), QStringList{"Numerical arrays"});
    Node* category = results()->firstChild();
    QCOMPARE(int(static_cast<const KAObject2Folder*>(category->data())->folderKind()),
             int(KAObjectTypeNumericalArraysFolder));
    QCOMPARE(payloads(childNodes(category)), QList<const KAObject2*>{well});
    Node* wellNode = category->firstChild();
    QCOMPARE(payloads(childNodes(wellNode)), QList<const KAObject2*>{dataset->data()});
    Node* datasetNode = wellNode->firstChild();
    QCOMPARE(toSet(payloads(childNodes(datasetNode))),
             toSet({variables.at(0)->data(), variables.at(1)->data()}));
    QCOMPARE(allNodes(results()).size(), 6);
}

void tst_KAProjectBrowserPluginSearch::saveWritesFile()
{
    const TApplicationData* data = TApplicationData::getInstance();
    const QString expectedPath = QDir(m_project->folder())
                                     .filePath(QStringLiteral("Settings/%1.%2.projectbrowser_saved_search.xml")
                                                   .arg(data->userName(), data->applicationName()));
    QCOMPARE(QDir::cleanPath(plugin()->savedSearchesPath()), QDir::cleanPath(expectedPath));

    plugin()->search(QStringLiteral("Blank"), KAObjectTypeProject);
    plugin()->slotSave();
    QDomDocument doc;
    QCOMPARE(readSaved(expectedPath, &doc), (Saved{{"Blank", "Blank"}}));
    QCOMPARE(doc.doctype().name(), QStringLiteral("saved_search"));
    const QDomElement root = doc.documentElement();
    QCOMPARE(root.tagName(), QStringLiteral("root"));
    QCOMPARE(root.attribute(QStringLiteral("version")), QStringLiteral("1.0"));
    QCOMPARE(root.childNodes().size(), 1);
    const QDomElement searches = root.firstChildElement();
    QCOMPARE(searches.tagName(), QStringLiteral("SEARCH"));
    QCOMPARE(searches.childNodes().size(), 1);
    QCOMPARE(searches.firstChildElement().tagName(), QStringLiteral("item"));

    // A second search: the items in name order.
    saveSearches({QStringLiteral("Café"), QStringLiteral("Accent")});
    QCOMPARE(readSaved(expectedPath),
             (Saved{{"Accent", "Accent"}, {"Blank", "Blank"}, {QStringLiteral("Café"), QStringLiteral("Café")}}));
    QVERIFY(errors().isEmpty());
}

void tst_KAProjectBrowserPluginSearch::renameDeleteAndReadBack()
{
    saveSearches({QStringLiteral("abc"), QStringLiteral("Blank"), QStringLiteral("Std Mix")});
    plugin()->init();
    Node* saved = plugin()->getTree();
    QCOMPARE(saved->data()->name(), QStringLiteral("Saved searches"));
    QVERIFY(!static_cast<const KAObject2SearchFolder*>(saved->data())->isResults());
    Node* node = childNamed(saved, QStringLiteral("abc"));
    QVERIFY(node);
    MessageLoggerInterface::returnMe()->clear();

    // A rename keeps the text; a delete takes the entry out of the file.
    QString name = QStringLiteral("Alphabet start");
    QVERIFY(m_ctrl->renameObject(node, name));
    QCOMPARE(node->data()->name(), QStringLiteral("Alphabet start"));
    QCOMPARE(static_cast<const KAObject2Search*>(node->data())->search(), QStringLiteral("abc"));
    QVERIFY(m_ctrl->deleteObject(childNamed(saved, QStringLiteral("Blank")), false));
    QCOMPARE(sorted(childNames(saved)), (QStringList{"Alphabet start", "Std Mix"}));
    const Saved expected{{"Alphabet start", "abc"}, {"Std Mix", "Std Mix"}};
    QCOMPARE(readSaved(plugin()->savedSearchesPath()), expected);
    QCOMPARE(plugin()->savedSearches().keys(), (QStringList{"Alphabet start", "Std Mix"}));
    QVERIFY2(errors().isEmpty(), qPrintable(errors().value(0).text));

    // A new plug-in reads them back when it starts, not before.
    m_ctrl.reset();
    makeCtrl();
    QVERIFY(plugin()->savedSearches().isEmpty());
    plugin()->init();
    QCOMPARE(plugin()->savedSearches().keys(), (QStringList{"Alphabet start", "Std Mix"}));
    QCOMPARE(sorted(childNames(plugin()->getTree())), (QStringList{"Alphabet start", "Std Mix"}));
    for (Node* n : childNodes(plugin()->getTree())) {
        QCOMPARE(int(n->data()->type()), int(KAObjectTypeSearch));
        QCOMPARE(static_cast<const KAObject2Search*>(n->data())->search(),
                 plugin()->savedSearches().value(n->data()->name()));
    }
    QVERIFY(plugin()->searchText().isNull());
}

void tst_KAProjectBrowserPluginSearch::readOnlyProjectWritesNothing()
{
    TApplicationData::getInstance()->setCurrentProjectReadOnly(true);
    plugin()->search(QStringLiteral("Blank"), KAObjectTypeProject);
    plugin()->slotSave();
    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(int(entries.first().level), int(MessageLoggerInterface::LevelWarning));
    QCOMPARE(entries.first().text, QStringLiteral("The project is read only. The search wil not be saved"));
    QVERIFY(!QFile::exists(plugin()->savedSearchesPath()));
    QVERIFY(!QDir(QDir(m_project->folder()).filePath(QStringLiteral("Settings")))
                 .entryList({QStringLiteral("*projectbrowser_saved_search*")}, QDir::Files)
                 .size());
    // The change stays in memory.
    QCOMPARE(plugin()->savedSearches().value(QStringLiteral("Blank")), QStringLiteral("Blank"));
}

void tst_KAProjectBrowserPluginSearch::doubleClickRunsSavedSearch()
{
    saveSearches({QStringLiteral("Blank")});
    m_ctrl.reset();

    KAProjectBrowserCtrl ctrl;
    ctrl.init(false, m_filter.get());
    ctrl.projectOpened(); // the host tells of its current project
    KAProjectBrowserTreeWidget* view = ctrl.treeWidget();
    const QStringList texts = topTexts(view);
    QVERIFY(texts.contains(QStringLiteral("Saved searches")));
    view->resize(300, 400);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view));
    QTreeWidgetItem* folder = view->topLevelItem(texts.indexOf(QStringLiteral("Saved searches")));
    folder->setExpanded(true);
    QCOMPARE(folder->childCount(), 1);
    QTreeWidgetItem* saved = folder->child(0);
    QCOMPARE(saved->text(0), QStringLiteral("Blank"));

    const QPoint position = view->visualItemRect(saved).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, position);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, position);
    QTRY_COMPARE(ctrl.searchPlugin()->searchText(), QStringLiteral("Blank"));
    QCOMPARE(int(view->currentStateId()), int(KAAbstractBrowserListView::stateSearch));
    QTRY_VERIFY(view->updatesEnabled());
    QCOMPARE(topTexts(view), QStringList{"Results"});
    QTreeWidgetItem* resultsItem = view->topLevelItem(0);
    QVERIFY(resultsItem->childCount() > 0);
    QCOMPARE(static_cast<KATreeWidgetItem*>(resultsItem)->node(), ctrl.searchPlugin()->getTree());
}

QTEST_MAIN(tst_KAProjectBrowserPluginSearch)
#include "tst_kaprojectbrowserpluginsearch.moc"
