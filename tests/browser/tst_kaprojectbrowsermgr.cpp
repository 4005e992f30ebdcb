#include "kaobject2analysis.h"
#include "kaobject2deconvms.h"
#include "kaobject2folder.h"
#include "kaobject2identification.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tdatabase.h"
#include "testfixture.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace TreeTest;

namespace {

// Sorted by address: two lists compare equal when they hold the same objects the same number of times.
QList<const KAObject2*> bag(QList<const KAObject2*> list)
{
    std::sort(list.begin(), list.end());
    return list;
}

const QStringList BranchTags = {"KAObject2Analysis", "KAObject2GlobalIndexation", "KAObject2Well",
                                "KAObject2Identification", "KAObject2IdentificationManual"};
const QStringList DefaultFolders = {"Identifications", "Numerical arrays", "Indexations", "Analysis"};
QByteArray readBytes(const QString& path) { QFile f(path); return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray(); }
bool writeBytes(const QString& path, const QByteArray& bytes) { QFile f(path); return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size(); }
// A saved project tree written by hand, as another session would have: the five branch elements.
QByteArray savedTreeXml(const QList<SavedEntry>& entries)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE projectBrowser_tree>\n<root version=\"1.0\">\n";
    for (const QString& tag : BranchTags) {
        xml += " <" + tag.toUtf8() + ">\n";
        for (const SavedEntry& e : entries)
            xml += e.branch != tag ? QByteArray() : "  <KAObject2 name=\"" + e.name.toHtmlEscaped().toUtf8() + "\" folder=\"" + e.folder.toHtmlEscaped().toUtf8() + "\"/>\n";
        xml += " </" + tag.toUtf8() + ">\n";
    }
    return xml + "</root>\n";
}
// The entries the saved file must hold for one branch, walked as the file is defined: children in
// list order, each node before its own children, one entry per payload whose folder path is not empty.
void expectedEntries(const QString& tag, const Node* node, QList<SavedEntry>& out)
{
    for (const Node* child : childNodes(node)) {
        const bool folder = child->data() && child->data()->type() == KAObjectTypeFolder;
        const QString path = folderChain(child) + (folder ? QLatin1Char('/') + child->data()->name() : QString());
        if (child->data() && !path.isEmpty())
            out.append({tag, child->data()->name(), path});
        expectedEntries(tag, child, out);
    }
}
} // namespace

// The project tree of a generated project: default folders, branch contents, laziness, saved user folders.
class tst_KAProjectBrowserMgr : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        m_fixture.reset(new TestFixture);
        m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"));
        QVERIFY(m_project && m_project->db());
        m_filter.reset(new KAProjectBrowserFilterPackage);
        MessageLoggerInterface::returnMe()->clear();
    }
    void cleanup() { m_ctrl.reset(); m_filter.reset(); m_fixture.reset(); }
    void defaultFolders_data()
    {
        QTest::addColumn<int>("removed");
        QTest::newRow("without analyses") << 1;
        QTest::newRow("without identifications") << 277;
    }
    // The default folders in child order, each with its branch key, folder kind and the kinds that may
    // be dropped on it. A kind left out of the filter hides its folder, whose content is built all the same.
    void defaultFolders()
    {
        QFETCH(int, removed);
        const int keys[] = {277, 3, 528, 1};
        build();
        QList<int> fullCounts;
        for (int key : keys)
            fullCounts.append(branch(KAObjectType(key))->childCount());
        m_ctrl.reset(); // no manager reads the filter while it changes
        m_filter->remove(KAObjectType(removed));
        build();
        QCOMPARE(childNames(root()), DefaultFolders);
        const int kinds[] = {530, 516, 528, 514};
        const QList<KAObjectType> drops[] = {{KAObjectTypeIdentificationGroup, KAObjectTypePeakDetect}, {KAObjectTypeWell},
                                             {KAObjectTypeGlobalIndexation, KAObjectTypeIdentificationGroup},
                                             {KAObjectTypeAnalysis}};
        for (int i = 0; i < 4; ++i) {
            Node* node = childNodes(root()).at(i);
            const auto* folder = static_cast<const KAObject2Folder*>(node->data());
            QVERIFY(branch(KAObjectType(keys[i])) == node && folder->type() == 260 && int(folder->folderKind()) == kinds[i]);
            QCOMPARE(folder->getAllowedVisualReparentType(), drops[i]);
            QCOMPARE(node->isVisible(), keys[i] != removed);
            QVERIFY(node->childCount() > 0);
            QCOMPARE(node->childCount(), fullCounts.at(i));
        }
    }
    // Every branch shows the database's objects of its kinds, each once and in no other branch: wells
    // with their datasets (hidden without); the global indexations with the groups marked 0x800; the
    // other groups with the ungrouped manual peak detections, never the temporary "tempPD_" ones.
    // Identifications are read only when opened: each waits behind a placeholder in its group.
    void branchesMatchDatabase()
    {
        build();
        QCOMPARE(bag(payloadsOfType(branch(KAObjectTypeAnalysis), KAObjectTypeAnalysis)), bag(objects(KAObjectTypeAnalysis)));
        for (const KAObject2* a : objects(KAObjectTypeAnalysis))
            QCOMPARE(bag(payloadsOfType(nodeOfObject(a), KAObjectTypeSignal)), bag(db()->getObjectVisualChildren(KAObjectTypeSignal, a)));
        int withoutDatasets = 0;
        QCOMPARE(bag(payloadsOfType(branch(KAObjectTypeWell), KAObjectTypeWell)), bag(objects(KAObjectTypeWell)));
        for (const KAObject2* well : objects(KAObjectTypeWell)) {
            const QList<const KAObject2*> datasets = db()->getObjectVisualChildren(KAObjectTypeDataset, well);
            QCOMPARE(bag(payloadsOfType(nodeOfObject(well), KAObjectTypeDataset)), bag(datasets));
            QCOMPARE(nodeOfObject(well)->isVisible(), !datasets.isEmpty());
            withoutDatasets += datasets.isEmpty();
        }
        QList<const KAObject2*> indexationGroups, groups, manual;
        for (const KAObject2* group : objects(KAObjectTypeIdentificationGroup))
            (static_cast<const KAObject2IdentificationGroup*>(group)->getSource() & 0x800 ? indexationGroups : groups).append(group);
        int hiddenTemp = 0;
        for (const KAObject2* object : objects(KAObjectTypePeakDetect)) {
            const auto* pd = static_cast<const KAObject2PeakDetect*>(object);
            if ((pd->getSource() & 0x200) && !db()->getIdentificationGroup(pd))
                pd->name().startsWith(QLatin1String("tempPD_")) ? ++hiddenTemp : (manual.append(pd), 0);
        }
        QVERIFY2(withoutDatasets > 0 && hiddenTemp > 0 && !indexationGroups.isEmpty() && !groups.isEmpty() && !manual.isEmpty(),
                 "the sample must hold a well without datasets, a temporary manual detection and both kinds of group");
        Node* indexations = branch(KAObjectTypeGlobalIndexation);
        QCOMPARE(bag(payloadsOfType(indexations, KAObjectTypeGlobalIndexation)), bag(objects(KAObjectTypeGlobalIndexation)));
        QCOMPARE(bag(payloadsOfType(indexations, KAObjectTypeIdentificationGroup)), bag(indexationGroups));
        Node* identifications = branch(KAObjectTypeIdentifications);
        QCOMPARE(bag(payloadsOfType(identifications, KAObjectTypeIdentificationGroup)), bag(groups));
        QCOMPARE(bag(payloadsOfType(root(), KAObjectTypePeakDetect)), bag(manual));
        QCOMPARE(identifications->childCount(), groups.size() + manual.size());
        Node* opened = nullptr;
        for (Node* groupNode : nodesOfType(identifications, KAObjectTypeIdentificationGroup)) {
            const auto* group = static_cast<const KAObject2IdentificationGroup*>(groupNode->data());
            const QList<const KAObject2Identification*> children = group->child();
            QList<const KAObject2*> shown = payloadsOfType(groupNode, KAObjectTypeIdentification);
            shown.removeOne(group);
            QCOMPARE(bag(shown), bag({children.begin(), children.end()}));
            for (Node* c : childNodes(groupNode)) {
                QVERIFY(carriesPlaceholder(c));
                if (!static_cast<const KAObject2Identification*>(c->data())->workPDList().isEmpty())
                    opened = c;
            }
        }
        // Opened, one lists its working peak detections, each an identification of the same group and
        // database that its node owns; a second expansion finds nothing left to read.
        QVERIFY2(opened, "the sample must hold an identification with working peak detections");
        const auto* identification = static_cast<const KAObject2Identification*>(opened->data());
        m_ctrl->fillNodeOnExpand(opened);
        QCOMPARE(opened->childCount(), identification->workPDList().size());
        for (Node* c : childNodes(opened)) {
            QCOMPARE(int(c->data()->type()), int(KAObjectTypeIdentification));
            const auto* shown = static_cast<const KAObject2Identification*>(c->data());
            QVERIFY(shown->parentGroup() == identification->parentGroup() && shown->db() == identification->db());
            QVERIFY(c->ownsData());
        }
        QVERIFY(!mgr()->fillNodeOnExpand(opened));
        QCOMPARE(opened->childCount(), identification->workPDList().size());
    }
    // A multichannel analysis with an MS peak-detection file shows one deconvolution entry (293) of its
    // own, when the filter holds the kind.
    void deconvolutionEntry()
    {
        int withFile = 0, without = 0;
        for (bool with293 : {true, false}) {
            if (!with293)
                m_filter->remove(KAObjectTypeDeconvMS);
            build();
            for (const KAObject2* object : objects(KAObjectTypeAnalysis)) {
                const auto* analysis = static_cast<const KAObject2Analysis*>(object);
                const bool hasFile = QFile::exists(TechDB::TDatabase::peakDetectMSPath(analysis));
                const QList<Node*> entries = nodesOfType(nodeOfObject(analysis), KAObjectTypeDeconvMS);
                QCOMPARE(entries.size(), analysis->isMulticanal() && hasFile && with293 ? 1 : 0);
                (hasFile ? withFile : without) += analysis->isMulticanal();
                QVERIFY(entries.isEmpty() || (entries.first()->parent()->data() == object && entries.first()->ownsData()
                        && static_cast<const KAObject2DeconvMS*>(entries.first()->data())->analysis() == analysis));
            }
        }
        QVERIFY2(withFile > 0 && without > 0, "the sample must hold multichannel analyses with and without an MS file");
    }
    // A manager that does not read its project at once shows it behind a placeholder and reads it on
    // the first expansion only. A closed project is opened silently, for the browser, not made current.
    void projectReadOnExpand()
    {
        ProjectMgrInterface* pm = ProjectMgrInterface::returnMe();
        QVERIFY(pm->closeProject(m_project));
        {
            KAProjectBrowserCtrl ctrl;
            ctrl.init(m_filter.get(), m_project, false);
            KAProjectBrowserMgr* fresh = ctrl.mgrList().first();
            Node* top = fresh->getTree();
            QVERIFY(top->data() == m_project && carriesPlaceholder(top) && !fresh->database());
            QVERIFY(!fresh->refreshRequested(KAObjectTypeAnalysis, nullptr)); // nothing read, nothing to refresh
            QVERIFY(fresh->fillNodeOnExpand(top) && m_project->db() && fresh->database() == m_project->db());
            QVERIFY(m_project->db()->accessMode() == ProjectMgrInterface::AccessModeBrowser && pm->currentProject() != m_project);
            QCOMPARE(nodesOfType(top, KAObjectTypeAnalysis).size(), objects(KAObjectTypeAnalysis).size());
            QVERIFY(!fresh->fillNodeOnExpand(top));
            QCOMPARE(childNames(top), DefaultFolders);
        }
        QVERIFY(pm->closeProject(m_project) && pm->openProject(m_project));
    }
    // Refreshing an analysis, or one of its signals, rebuilds that analysis's children only; expanded
    // children tell the nodes kept from those rebuilt. A refresh also finds an analysis added since the
    // tree was built; an unknown kind, or an analysis of another project's database, is refused.
    void refreshRebuildsWhatItNames()
    {
        build();
        const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
        Node* refreshed = nodeOfObject(analyses.at(0));
        Node* other = nodeOfObject(analyses.at(1));
        refreshed->setExpanded(true);
        for (Node* c : childNodes(refreshed) + childNodes(other))
            c->setExpanded(true);
        const QStringList refreshedNames = childNames(refreshed);
        const QList<Node*> otherChildren = childNodes(other);
        QVERIFY(mgr()->refreshRequested(KAObjectTypeAnalysis, analyses.at(0)));
        QVERIFY(nodeOfObject(analyses.at(0)) == refreshed && refreshed->isExpanded());
        QCOMPARE(sorted(childNames(refreshed)), sorted(refreshedNames));
        for (Node* c : childNodes(refreshed))
            QVERIFY2(!c->isExpanded(), "the analysis's children are rebuilt");
        QCOMPARE(childNodes(other), otherChildren);
        for (Node* c : childNodes(other))
            QVERIFY2(c->isExpanded(), "another analysis is left as it was");
        QCOMPARE(nodesOfType(root(), KAObjectTypeAnalysis).size(), analyses.size());
        const KAObject2* signal = db()->getObjectVisualChildren(KAObjectTypeSignal, analyses.at(1)).first();
        QVERIFY(mgr()->refreshRequested(KAObjectTypeSignal, signal));
        for (Node* c : childNodes(other))
            QVERIFY2(!c->isExpanded(), "a signal rebuilds its analysis");
        QVERIFY(!mgr()->refreshRequested(KAObjectType(999), nullptr));

        QVERIFY(db()->beginBatch());
        const qint64 id = db()->addObject(KAObjectTypeAnalysis, 0, QStringLiteral("Late analysis"));
        QVERIFY(id && db()->addObject(KAObjectTypeSignal, id, QStringLiteral("FID 9")) && db()->commitBatch());
        const KAObject2* added = db()->objectById(id);
        QVERIFY(added && !nodeOfObject(added));
        QVERIFY(mgr()->refreshRequested(KAObjectTypeAnalysis, added));
        QVERIFY(nodeOfObject(added) && nodeOfObject(added)->parent() == branch(KAObjectTypeAnalysis));
        QCOMPARE(childNames(nodeOfObject(added)), QStringList{"FID 9"});

        TestFixture otherFixture;
        const KAObject2Project* beta = otherFixture.openSampleProject(QStringLiteral("Beta"));
        QVERIFY(beta && beta->db());
        const KAObject2* foreign = beta->db()->getObjectLst(KAObjectTypeAnalysis).first();
        QVERIFY(!mgr()->refreshRequested(KAObjectTypeAnalysis, foreign) && !nodeOfObject(foreign));
        QCOMPARE(nodesOfType(root(), KAObjectTypeAnalysis).size(), objects(KAObjectTypeAnalysis).size());
    }
    void savedLayoutRestoredAndKeptByRefresh_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("object"); // which object is passed, if any
        QTest::newRow("one analysis") << 1 << "analysis";
        QTest::newRow("signal") << 2 << "signal";
        QTest::newRow("dataset") << 4 << "dataset";
        QTest::newRow("identifications") << 277 << "";
        QTest::newRow("indexations") << 528 << "";
    }
    // The user folders saved when the manager goes come back with the objects in them (an empty one
    // too, each accepting its branch's kind), and stay when a branch is rebuilt; each object shown once.
    void savedLayoutRestoredAndKeptByRefresh()
    {
        QFETCH(int, kind);
        QFETCH(QString, object);
        build();
        const Layout placed = makeUserLayout();
        // The saved tree: its document type, root and the five branch elements in order, each entry
        // of the tree walked as the file is defined, the identifications going into both of theirs.
        QVERIFY(mgr()->saveTree());
        QVERIFY(!QFile::exists(sessionPath()));
        QDomDocument doc;
        const QList<SavedEntry> entries = readSavedEntries(defaultPath(), &doc);
        QCOMPARE(doc.doctype().name(), QStringLiteral("projectBrowser_tree"));
        const QDomElement top = doc.documentElement();
        QVERIFY(top.tagName() == "root" && top.attribute("version") == "1.0" && top.attribute("projectName") == db()->location());
        QStringList tags;
        for (QDomElement e = top.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
            tags.append(e.tagName());
        QCOMPARE(tags, BranchTags);
        const KAObjectType keys[] = {KAObjectTypeAnalysis, KAObjectTypeGlobalIndexation, KAObjectTypeWell,
                                     KAObjectTypeIdentifications, KAObjectTypeIdentifications};
        QList<SavedEntry> expected;
        for (int i = 0; i < 5; ++i)
            expectedEntries(BranchTags.at(i), branch(keys[i]), expected);
        QCOMPARE(entries, expected);
        QVERIFY(entries.contains({"KAObject2Analysis", "Empty", "/Analysis/Empty"})
                && entries.contains({"KAObject2IdentificationManual", "Reviewed", "/Identifications/Reviewed"}));
        build(); // the manager before saves the layout as it goes
        for (const auto& p : placed)
            QCOMPARE(folderChain(nodeOfObject(p.first)), p.second);
        const auto* empty = static_cast<const KAObject2Folder*>(childFolder(branch(KAObjectTypeAnalysis), "Empty")->data());
        QVERIFY(empty->folderKind() == KAObjectTypeUserFolder && !nodeOfObject(empty)->childCount());
        QCOMPARE(empty->getAllowedVisualReparentType(), QList<KAObjectType>{KAObjectTypeAnalysis});
        const QHash<QString, const KAObject2*> passed = {{"analysis", placed.at(0).first},
            {"signal", db()->getObjectVisualChildren(KAObjectTypeSignal, placed.at(0).first).first()},
            {"dataset", db()->getObjectVisualChildren(KAObjectTypeDataset, placed.at(3).first).first()}};
        QVERIFY(mgr()->refreshRequested(KAObjectType(kind), passed.value(object)));
        for (const auto& p : placed)
            QCOMPARE(folderChain(nodeOfObject(p.first)), p.second);
        for (qint32 type : {KAObjectTypeAnalysis, KAObjectTypeWell, KAObjectTypeGlobalIndexation,
                            KAObjectTypeIdentificationGroup, KAObjectTypeDataset, KAObjectTypeSignal})
            QCOMPARE(nodesOfType(root(), type).size(), objects(KAObjectType(type)).size());
    }
    // A saved tree written by hand or by a session in another language: extra slashes collapse, and
    // user folders come back under this session's branch folders.
    void savedTreeWrittenElsewhere()
    {
        const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
        const KAObject2* well = objects(KAObjectTypeWell).first();
        const QString rejected = QStringLiteral("/Analysis/Batch 3/Rejected");
        QVERIFY(writeBytes(defaultPath(), savedTreeXml({{BranchTags[0], analyses.at(0)->name(), "//Analysis//Batch 3///Rejected/"},
            {BranchTags[0], analyses.at(1)->name(), rejected}, {BranchTags[2], well->name(), "/Tableaux numériques/Plaques"}})));
        build();
        QVERIFY(folderChain(nodeOfObject(analyses.at(0))) == rejected && folderChain(nodeOfObject(analyses.at(1))) == rejected);
        QCOMPARE(folderChain(nodeOfObject(well)), QStringLiteral("/Numerical arrays/Plaques"));
        QCOMPARE(childNames(root()), DefaultFolders);
        QCOMPARE(nodesOfType(branch(KAObjectTypeAnalysis), KAObjectTypeFolder).size(), 3);
    }
    // Quotes, ampersands, angle brackets and non-Latin letters survive a save and reload; a folder
    // name with a slash, which would split its saved path, is refused with a message.
    void savedTreeKeepsUnusualNames()
    {
        const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
        QVERIFY(db()->objectRename(analyses.at(0), QStringLiteral("Run 1/2 \"quoted\" & <tag> 'x'")));
        QVERIFY(db()->objectRename(analyses.at(1), QStringLiteral("Анализ 日本語 ελληνικά")));
        build();
        QVERIFY(!m_ctrl->createFolder(QStringLiteral("2023/2024"), branch(KAObjectTypeAnalysis)));
        const QList<MessageLoggerInterface::Entry> log = MessageLoggerInterface::returnMe()->entries();
        QVERIFY(log.size() == 1 && log.first().level == MessageLoggerInterface::LevelError && log.first().text.contains("2023/2024"));
        const QString folderName = QStringLiteral("Lot \"A\" & <B> été 日本 'q'");
        QList<const KAObject2*> rejected;
        QVERIFY(m_ctrl->moveItem({analyses.at(0), analyses.at(1)}, m_ctrl->createFolder(folderName, branch(KAObjectTypeAnalysis)), rejected));
        QVERIFY(mgr()->saveTree());
        build();
        Node* restored = childFolder(branch(KAObjectTypeAnalysis), folderName);
        QVERIFY(restored && nodeOfObject(analyses.at(0))->parent() == restored && nodeOfObject(analyses.at(1))->parent() == restored);
        QCOMPARE(nodesOfType(branch(KAObjectTypeAnalysis), KAObjectTypeFolder).size(), 2); // the branch, the folder: no "2023"
    }
    void unreadableSavedTreeIgnored_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray valid = savedTreeXml({{BranchTags.first(), "Batch 3", "/Analysis/Batch 3"}});
        QTest::newRow("malformed") << QByteArray(valid).replace("</KAObject2Analysis>", "</KAObject2Well>");
        QTest::newRow("truncated") << valid.left(valid.indexOf("folder=") + 12);
        QTest::newRow("foreign document") << QByteArray(valid).replace("root", "filesystemtreeconfig")
                                                        .replace("projectBrowser_tree", "filesystemtreeconfig");
        QTest::newRow("empty") << QByteArray();
        QByteArray deep = "<root version=\"1.0\"><KAObject2Analysis>";
        for (int i = 0; i < 50000; ++i)
            deep += "<KAObject2 name=\"Batch 3\" folder=\"/Analysis/Batch 3\">";
        QTest::newRow("nested 50000 levels, unterminated") << deep;
    }
    // A saved tree that cannot be read is ignored in silence: the tree is built as without one.
    void unreadableSavedTreeIgnored()
    {
        QFETCH(QByteArray, content);
        QVERIFY(writeBytes(defaultPath(), content));
        build();
        QCOMPARE(nodesOfType(root(), KAObjectTypeFolder).size(), 4); // the default folders only
        QCOMPARE(branch(KAObjectTypeAnalysis)->childCount(), objects(KAObjectTypeAnalysis).size());
        QVERIFY(MessageLoggerInterface::returnMe()->entries().isEmpty());
    }
    void failedSaveKeepsSavedTree_data()
    {
        QTest::addColumn<int>("obstacle");
        QTest::newRow("a folder at the session file's path") << 0;
        QTest::newRow("read-only settings folder") << 1;
        QTest::newRow("another project is current") << 2;
    }
    // A save that cannot be written, or must not be (the tree is not the current project's), fails and
    // leaves the saved tree as it was; with the obstacle gone, it goes through.
    void failedSaveKeepsSavedTree()
    {
        QFETCH(int, obstacle);
        build();
        QVERIFY(m_ctrl->createFolder(QStringLiteral("Batch 3"), branch(KAObjectTypeAnalysis)) && mgr()->saveTree());
        const QByteArray saved = readBytes(defaultPath());
        QVERIFY(saved.contains("/Analysis/Batch 3"));
        QVERIFY(m_ctrl->createFolder(QStringLiteral("Later"), branch(KAObjectTypeAnalysis)));
        const QFile::Permissions before = QFile(settingsPath()).permissions();
        ProjectMgrInterface* pm = ProjectMgrInterface::returnMe();
        QString betaFolder;
        const KAObject2Project* beta = nullptr;
        if (obstacle == 0) {
            QVERIFY(QDir().mkpath(sessionPath()));
        } else if (obstacle == 1) {
            QVERIFY(QFile(settingsPath()).setPermissions(QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup
                                                         | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
            QFile probe(QDir(settingsPath()).filePath(QStringLiteral("probe")));
            if (probe.open(QIODevice::WriteOnly)) {
                probe.remove();
                QFile(settingsPath()).setPermissions(before);
                QSKIP("permissions do not stop this user (root) from writing; another row covers the failed write");
            }
        } else {
            betaFolder = m_fixture->makeProject(QStringLiteral("Beta"));
            beta = pm->discoverProject(betaFolder);
            QVERIFY(beta && pm->openProject(beta));
            QCOMPARE(pm->currentProject(), beta);
        }
        const bool savedAgain = mgr()->saveTree();
        QFile(settingsPath()).setPermissions(before); // before any check can leave the folder locked
        QVERIFY(!savedAgain);
        QCOMPARE(readBytes(defaultPath()), saved);
        if (obstacle == 1)
            return;
        if (obstacle == 0) {
            QVERIFY(QDir().rmdir(sessionPath()));
        } else {
            QVERIFY(!QFile::exists(QDir(betaFolder).filePath(QStringLiteral("Settings/default.projectbrowser.xml"))));
            pm->setCurrentProject(m_project);
        }
        QVERIFY(mgr()->saveTree() && readBytes(defaultPath()).contains("/Analysis/Later"));
        if (beta)
            pm->closeProject(beta);
    }
private:
    using Layout = QList<QPair<const KAObject2*, QString>>;
    // Any manager already there goes first: it saves its layout when it goes.
    void build()
    {
        m_ctrl.reset();
        m_ctrl.reset(new KAProjectBrowserCtrl);
        m_ctrl->init(m_filter.get(), m_project, true);
    }
    // User folders in every branch (an empty one too), with objects moved into them; the folder
    // chain of each object moved, and of an analysis left alone.
    Layout makeUserLayout()
    {
        QList<const KAObject2*> rejected;
        const QList<const KAObject2*> analyses = objects(KAObjectTypeAnalysis);
        Node* batch3 = m_ctrl->createFolder(QStringLiteral("Batch 3"), branch(KAObjectTypeAnalysis));
        m_ctrl->createFolder(QStringLiteral("Empty"), branch(KAObjectTypeAnalysis)); // stays empty
        m_ctrl->moveItem({analyses.at(0)}, m_ctrl->createFolder(QStringLiteral("Rejected"), batch3), rejected);
        m_ctrl->moveItem({analyses.at(1)}, batch3, rejected);
        const KAObject2* well = objects(KAObjectTypeWell).first();
        m_ctrl->moveItem({well}, m_ctrl->createFolder(QStringLiteral("Plates"), branch(KAObjectTypeWell)), rejected);
        const KAObject2* indexation = objects(KAObjectTypeGlobalIndexation).first();
        const KAObject2* indexationGroup = payloadsOfType(branch(KAObjectTypeGlobalIndexation), KAObjectTypeIdentificationGroup).first();
        m_ctrl->moveItem({indexation, indexationGroup}, m_ctrl->createFolder(QStringLiteral("Kovats"), branch(KAObjectTypeGlobalIndexation)), rejected);
        Node* identifications = branch(KAObjectTypeIdentifications);
        const KAObject2* group = payloadsOfType(identifications, KAObjectTypeIdentificationGroup).first();
        const KAObject2* manual = payloadsOfType(identifications, KAObjectTypePeakDetect).first();
        m_ctrl->moveItem({group, manual}, m_ctrl->createFolder(QStringLiteral("Reviewed"), identifications), rejected);
        return {{analyses.at(0), "/Analysis/Batch 3/Rejected"}, {analyses.at(1), "/Analysis/Batch 3"}, {analyses.at(2), "/Analysis"},
                {well, "/Numerical arrays/Plates"}, {indexation, "/Indexations/Kovats"}, {indexationGroup, "/Indexations/Kovats"},
                {group, "/Identifications/Reviewed"}, {manual, "/Identifications/Reviewed"}};
    }
    QString settingsPath() const { return QDir(m_project->folder()).filePath(QStringLiteral("Settings")); }
    QString defaultPath() const { return QDir(settingsPath()).filePath(QStringLiteral("default.projectbrowser.xml")); }
    QString sessionPath() const { return QDir(settingsPath()).filePath(QStringLiteral("session.projectbrowser.xml")); }
    KAProjectBrowserMgr* mgr() const { return m_ctrl->mgrList().first(); }
    Node* root() const { return mgr()->getTree(); }
    Node* branch(KAObjectType key) const { return mgr()->getTree(key); }
    Node* nodeOfObject(const KAObject2* object) const { return nodeOf(root(), object); }
    TechDB::TDatabase* db() const { return m_project->db(); }
    QList<const KAObject2*> objects(KAObjectType type) const { return db()->getObjectLst(type); }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
};

QTEST_MAIN(tst_KAProjectBrowserMgr)
#include "tst_kaprojectbrowsermgr.moc"
