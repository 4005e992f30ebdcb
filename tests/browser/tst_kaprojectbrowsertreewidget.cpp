#include "kamimedata.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "messageloggerinterface.h"
#include "projecttreehelpers.h"
#include "tapplicationdata.h"
#include "testfixture.h"
#include "tmessagebox.h"

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QMenu>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidgetItemIterator>

#include <functional>
#include <memory>

using namespace TreeTest;

using Answers = QList<int>; // 0 yes, 1 no, 2 yes and apply to all
static const int YesToAll = 2;

Q_DECLARE_METATYPE(Answers)

// The project tree widget on an opened sample project: read-only checks, new folder, deletion answered
// through the message-box seam and drops onto folders.
class tst_KAProjectBrowserTreeWidget : public QObject
{
    Q_OBJECT

    KAProjectBrowserTreeWidget* view() const { return m_ctrl->treeWidget(); }
    // Level and text of each message logged.
    QStringList logged() const
    {
        QStringList texts;
        for (const MessageLoggerInterface::Entry& e : MessageLoggerInterface::returnMe()->entries())
            texts << QString::number(e.level) + ' ' + e.text;
        return texts;
    }
    // "Analysis/F1": a folder under a default branch; "Indexations": the default branch itself.
    Node* folderNode(const QString& path) const
    {
        Node* node = m_ctrl->mgrList().first()->getTree();
        for (const QString& name : path.split(QLatin1Char('/')))
            node = node ? childFolder(node, name) : nullptr;
        return node;
    }
    // The browser's items that match, in the view's order.
    QList<KATreeWidgetItem*> items(const std::function<bool(KATreeWidgetItem*)>& wanted) const
    {
        QList<KATreeWidgetItem*> found;
        for (QTreeWidgetItemIterator it(view()); *it; ++it) {
            auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
            if (item && wanted(item))
                found.append(item);
        }
        return found;
    }
    int itemsNamed(const QString& name) const { return items([&](auto* i) { return i->text(0) == name; }).size(); }
    KATreeWidgetItem* itemOf(Node* node) const { return items([&](auto* i) { return i->node() == node; }).value(0); }
    // Expands the items down to the node's item and returns it.
    KATreeWidgetItem* expandTo(Node* node)
    {
        if (node && node->parent())
            expandTo(node->parent())->setExpanded(true);
        return node ? itemOf(node) : nullptr;
    }
    // The actions as the user reaches them: through the context menu.
    void runAction(const QString& text)
    {
        QList<QAction*> actions = view()->contextMenu()->actions();
        actions += actions.first()->menu()->actions(); // "New"
        for (QAction* action : qAsConst(actions)) {
            if (action->text() == text)
                return action->trigger();
        }
        QFAIL(qPrintable(text));
    }
    void answerWith(const Answers& answers)
    {
        m_questions.clear();
        TMessageBox::setAnswerProvider([this, answers](const QString& kind, const QString& text, bool* applyToAll) {
            m_questions.append({kind, text, applyToAll ? QStringLiteral("offered") : QString()});
            const int answer = answers.value(m_questions.size() - 1, 1);
            if (answer == YesToAll && applyToAll)
                *applyToAll = true;
            return answer == YesToAll ? 0 : answer;
        });
    }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    QList<QStringList> m_questions; // kind, text, "offered" when the apply-to-all box was

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void init()
    {
        m_fixture.reset(new TestFixture);
        m_filter.reset(new KAProjectBrowserFilterPackage);
        m_ctrl.reset(new KAProjectBrowserCtrl);
        m_ctrl->init(false, m_filter.get());
        QVERIFY(m_fixture->openSampleProject(QStringLiteral("Alpha")));
        QCOMPARE(view()->topLevelItemCount(), 3); // the project, then the plug-in branches
        TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
        answerWith({}); // every question is answered "no" unless a test says otherwise
        MessageLoggerInterface::returnMe()->clear();
    }
    void cleanup()
    {
        TMessageBox::setAnswerProvider({});
        TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
        m_ctrl.reset();
        m_fixture.reset();
    }

    // A read-only view refuses silently, a read-only project with a message;
    // neither asks anything nor changes the tree.
    void actionOnUserFolder_data()
    {
        QTest::addColumn<QString>("readOnly"); // "view", "project" or ""
        QTest::addColumn<QString>("action");
        QTest::addColumn<QStringList>("log"); // level and text of the messages logged
        for (const char* action : {"Folder", "Rename", "Delete"})
            QTest::addRow("read-only view: %s", action) << "view" << action << QStringList();
        const QString warning = QString::number(MessageLoggerInterface::LevelWarning) + ' ';
        const QString error = QString::number(MessageLoggerInterface::LevelError) + ' ';
        QTest::newRow("read-only project: new folder") << "project" << "Folder" << QStringList{
            warning + "Impossible to add a new folder because current project is opened as <b>Read Only</b>"};
        QTest::newRow("read-only project: rename") << "project" << "Rename" << QStringList{
            warning + "Impossible to rename an item from  current project because it is opened as <b>Read Only</b>"};
        QTest::newRow("read-only project: delete") << "project" << "Delete" << QStringList{
            error + " Impossible to remove item from current project because it is opened as <b>Read Only</b>"};
        QTest::newRow("writable: rename opens the editor") << "" << "Rename" << QStringList();
    }
    void actionOnUserFolder()
    {
        QFETCH(QString, readOnly);
        QFETCH(QString, action);
        QFETCH(QStringList, log);
        Node* user = m_ctrl->createFolder(QStringLiteral("Kept"), folderNode(QStringLiteral("Analysis")));
        KATreeWidgetItem* item = expandTo(user);
        view()->setCurrentItem(item);
        item->setSelected(true);
        answerWith({0, 0, 0});
        MessageLoggerInterface::returnMe()->clear();
        if (readOnly == QLatin1String("view"))
            m_filter->setReadOnly();
        else if (readOnly == QLatin1String("project"))
            TApplicationData::getInstance()->setCurrentProjectReadOnly(true);
        runAction(action);
        QCOMPARE(logged(), log);
        QVERIFY(m_questions.isEmpty());
        QCOMPARE(user->childCount(), 0);
        QCOMPARE(folderNode(QStringLiteral("Analysis/Kept")), user);
        QCOMPARE(itemOf(user), item);
        QCOMPARE(view()->renameEditor() != nullptr, readOnly.isEmpty());
    }

    // Made in the current folder, shown at once with its name editor open;
    // nothing is made for an item that is not the browser's own.
    void newFolderOpensEditor()
    {
        const int folders = nodesOfType(m_ctrl->mgrList().first()->getTree(), KAObjectTypeFolder).size();
        view()->setCurrentItem(new QTreeWidgetItem(view(), QStringList{QStringLiteral("Foreign")}));
        runAction(QStringLiteral("Folder"));
        QCOMPARE(nodesOfType(m_ctrl->mgrList().first()->getTree(), KAObjectTypeFolder).size(), folders);
        QVERIFY(!view()->renameEditor());
        KATreeWidgetItem* analysis = itemOf(folderNode(QStringLiteral("Analysis")));
        view()->setCurrentItem(analysis);
        runAction(QStringLiteral("Folder"));
        KATreeWidgetItem* created = itemOf(folderNode(QStringLiteral("Analysis/New folder")));
        QVERIFY(created);
        QCOMPARE(created->parent(), analysis);
        QVERIFY(analysis->isExpanded());
        QCOMPARE(itemsNamed(QStringLiteral("New folder")), 1);
        QVERIFY2(view()->renameEditor(), "the name editor opens at once");
        QCOMPARE(view()->currentItem(), created);
        QVERIFY(logged().isEmpty());
    }

    void deleteSelection_data()
    {
        QTest::addColumn<QStringList>("selection");
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<int>("questions");
        QTest::addColumn<QStringList>("deleted");
        QTest::addColumn<QString>("error");
        const QStringList three{"Analysis/F1", "Analysis/F2", "Analysis/F3"};
        QTest::newRow("apply to all ticked at the first question")
            << three << Answers{YesToAll} << 1 << three << QString();
        QTest::newRow("first declined") << three << Answers{1} << 1 << QStringList() << QString();
        QTest::newRow("second declined") << three << Answers{0, 1} << 2 << QStringList{"Analysis/F1"} << QString();
        QTest::newRow("one item, no check box") << QStringList{"Analysis/F2"} << Answers{0} << 1
                                                << QStringList{"Analysis/F2"} << QString();
        QTest::newRow("second refused by the project")
            << QStringList{"Analysis/F1", "Indexations", "Numerical arrays/N1"} << Answers{0, 0, 0} << 2
            << QStringList{"Analysis/F1"} << QStringLiteral("Deleting <b>Indexations</b> has failed");
    }
    void deleteSelection()
    {
        QFETCH(QStringList, selection);
        QFETCH(Answers, answers);
        QFETCH(int, questions);
        QFETCH(QStringList, deleted);
        QFETCH(QString, error);
        for (const char* name : {"F1", "F2", "F3"})
            QVERIFY(m_ctrl->createFolder(QString::fromUtf8(name), folderNode(QStringLiteral("Analysis"))));
        QVERIFY(m_ctrl->createFolder(QStringLiteral("N1"), folderNode(QStringLiteral("Numerical arrays"))));
        for (const QString& path : selection) {
            QVERIFY2(expandTo(folderNode(path)), qPrintable(path));
            expandTo(folderNode(path))->setSelected(true);
        }
        const QString savedTree = m_ctrl->mgrList().first()->savedTreePath();
        QFile::remove(savedTree);
        answerWith(answers);
        MessageLoggerInterface::returnMe()->clear();
        runAction(QStringLiteral("Delete"));
        QCOMPARE(m_questions.size(), questions);
        QCOMPARE(m_questions.first().mid(0, 2),
                 (QStringList{"askForDelete", QStringLiteral("Do you really want to remove <b>%1</b>?")
                                                  .arg(selection.first().section(QLatin1Char('/'), -1))}));
        for (const QStringList& q : qAsConst(m_questions))
            QCOMPARE(q.at(2).isEmpty(), selection.size() < 2);
        for (const QString& path : selection) {
            QVERIFY2((folderNode(path) == nullptr) == deleted.contains(path), qPrintable(path));
            QCOMPARE(itemsNamed(path.section(QLatin1Char('/'), -1)), deleted.contains(path) ? 0 : 1);
        }
        const QString errorLevel = QString::number(MessageLoggerInterface::LevelError) + ' ';
        QCOMPARE(logged().filter(QRegularExpression('^' + errorLevel)),
                 error.isEmpty() ? QStringList() : QStringList{errorLevel + error});
        QVERIFY2(QFile::exists(savedTree), "the tree is saved in every case");
    }

    // Dropped as a drag delivers it, analyses and a well onto a folder of
    // analyses: the analyses move, in the model and the view; the well stays,
    // with its refusal logged.
    void dropMovesObjectsIntoFolder()
    {
        Node* analysis = folderNode(QStringLiteral("Analysis"));
        Node* target = m_ctrl->createFolder(QStringLiteral("Target"), analysis);
        const QList<Node*> analyses = nodesOfType(analysis, KAObjectTypeAnalysis);
        Node* well = nodesOfType(folderNode(QStringLiteral("Numerical arrays")), KAObjectTypeWell).first();
        Node* wellParent = well->parent();
        QTreeWidgetItem* wellItemParent = expandTo(well)->parent();
        KATreeWidgetItem* targetItem = expandTo(target);
        view()->resize(400, 900);
        view()->show();
        QVERIFY(QTest::qWaitForWindowExposed(view()));
        view()->scrollToItem(targetItem);
        const QPoint position = view()->visualItemRect(targetItem).center();
        QCOMPARE(view()->itemAt(position), static_cast<QTreeWidgetItem*>(targetItem));
        const QList<const KAObject2*> objects{analyses.at(0)->data(), well->data(), analyses.at(1)->data()};
        std::unique_ptr<QMimeData> data(
            KAMimeData<QList<const KAObject2*>>::create(nullptr, objects, QStringLiteral("kavelo/data")));
        QDragEnterEvent enter(position, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QDragMoveEvent move(position, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QDropEvent drop(position, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        for (QDropEvent* event : {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move), &drop}) {
            QApplication::sendEvent(view()->viewport(), event);
            QVERIFY2(event->isAccepted(), qPrintable(QString::number(event->type())));
        }
        QCOMPARE((QList<Node*>{analyses.at(0)->parent(), well->parent(), analyses.at(1)->parent()}),
                 (QList<Node*>{target, wellParent, target}));
        QVERIFY(!logged().filter(QRegularExpression(QStringLiteral("^%1 .*").arg(MessageLoggerInterface::LevelError)))
                     .filter(well->data()->name().toHtmlEscaped())
                     .isEmpty());
        itemOf(target)->setExpanded(true);
        for (const KAObject2* object : objects) {
            const auto shown = items([object](KATreeWidgetItem* i) { return i->object() == object; });
            QCOMPARE(shown.size(), 1);
            QCOMPARE(shown.first()->parent(), object == well->data() ? wellItemParent : itemOf(target));
        }
    }
};

QTEST_MAIN(tst_KAProjectBrowserTreeWidget)
#include "tst_kaprojectbrowsertreewidget.moc"
