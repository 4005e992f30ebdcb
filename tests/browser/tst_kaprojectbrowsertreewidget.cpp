#include "kamimedata.h"
#include "kaobject2folder.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "mainwindowinterface.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "projecttreehelpers.h"
#include "tapplicationdata.h"
#include "testfixture.h"
#include "tmessagebox.h"
#include "ttree.h"

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QMenu>
#include <QTest>
#include <QTreeWidgetItemIterator>

#include <memory>

using namespace TreeTest;

namespace {

struct Question {
    QString kind;
    QString text;
    bool offered = false;
};

// The host window as far as the view sees it: the status-bar messages.
class TestWindow : public MainWindowInterface
{
public:
    QStatusBar* statusBar() override { return nullptr; }
    void showMessage(const QString& message) override { messages.append(message); }
    QStringList messages;
};

QList<KATreeWidgetItem*> itemsShowing(QTreeWidget* view, const KAObject2* object)
{
    QList<KATreeWidgetItem*> items;
    for (QTreeWidgetItemIterator it(view); *it; ++it) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
        if (item && item->object() == object)
            items.append(item);
    }
    return items;
}

int itemsNamed(QTreeWidget* view, const QString& name)
{
    int count = 0;
    for (QTreeWidgetItemIterator it(view); *it; ++it) {
        if ((*it)->text(0) == name)
            ++count;
    }
    return count;
}

using Answers = QList<int>; // 0 yes, 1 no, 2 yes and apply to all
const int YesToAll = 2;

} // namespace

Q_DECLARE_METATYPE(Answers)

// The project tree widget on an opened sample project: read-only checks,
// context menu, new folder, deletion answered through the message-box
// seam, selection message and drops onto folders.
class tst_KAProjectBrowserTreeWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void actionOnUserFolder_data();
    void actionOnUserFolder();
    void contextMenuEntries();
    void newFolderOpensEditor();
    void newFolderOnForeignItemDoesNothing();
    void deleteSelection_data();
    void deleteSelection();
    void selectionMessage();
    void dropMovesObjectsIntoFolder();

private:
    void runAction(const QString& action);
    // "Analysis/F1": a folder under a default branch; "Indexations": the
    // default branch itself.
    Node* folderNode(const QString& path) const;
    KATreeWidgetItem* itemOf(Node* node) const;
    // Expands the items down to the node's item and returns it.
    KATreeWidgetItem* expandTo(Node* node);
    void answerWith(const Answers& answers);
    QAction* menuAction(const QString& text) const;
    KAProjectBrowserTreeWidget* view() const { return m_ctrl->treeWidget(); }
    KAProjectBrowserMgr* mgr() const { return m_ctrl->mgrList().first(); }
    QList<MessageLoggerInterface::Entry> log() const { return MessageLoggerInterface::returnMe()->entries(); }

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAProjectBrowserFilterPackage> m_filter;
    std::unique_ptr<KAProjectBrowserCtrl> m_ctrl;
    const KAObject2Project* m_project = nullptr; // not owned: the project manager's
    QList<Question> m_questions;
};

void tst_KAProjectBrowserTreeWidget::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserTreeWidget::init()
{
    m_questions.clear();
    m_fixture.reset(new TestFixture);
    m_filter.reset(new KAProjectBrowserFilterPackage);
    m_ctrl.reset(new KAProjectBrowserCtrl);
    m_ctrl->init(false, m_filter.get());
    m_project = m_fixture->openSampleProject(QStringLiteral("Alpha"));
    QVERIFY(m_project);
    QCOMPARE(m_ctrl->mgrList().size(), 1);
    QCOMPARE(view()->topLevelItemCount(), 3); // the project, then the plug-in branches
    TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
    // Every question is answered "no" unless a test says otherwise.
    answerWith({});
    MessageLoggerInterface::returnMe()->clear();
}

void tst_KAProjectBrowserTreeWidget::cleanup()
{
    TMessageBox::setAnswerProvider({});
    MainWindowInterface::setInstance(nullptr);
    TApplicationData::getInstance()->setCurrentProjectReadOnly(false);
    m_ctrl.reset();
    m_filter.reset();
    m_fixture.reset();
    m_project = nullptr;
}

void tst_KAProjectBrowserTreeWidget::answerWith(const Answers& answers)
{
    TMessageBox::setAnswerProvider([this, answers](const QString& kind, const QString& text, bool* applyToAll) {
        const int index = m_questions.size();
        m_questions.append({kind, text, applyToAll != nullptr});
        const int answer = index < answers.size() ? answers.at(index) : 1;
        if (answer == YesToAll && applyToAll)
            *applyToAll = true;
        return answer == YesToAll ? 0 : answer;
    });
}

Node* tst_KAProjectBrowserTreeWidget::folderNode(const QString& path) const
{
    Node* node = mgr()->getTree();
    for (const QString& name : path.split(QLatin1Char('/'))) {
        node = childFolder(node, name);
        if (!node)
            return nullptr;
    }
    return node;
}

KATreeWidgetItem* tst_KAProjectBrowserTreeWidget::itemOf(Node* node) const
{
    for (QTreeWidgetItemIterator it(view()); *it; ++it) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
        if (item && item->node() == node)
            return item;
    }
    return nullptr;
}

KATreeWidgetItem* tst_KAProjectBrowserTreeWidget::expandTo(Node* node)
{
    QList<Node*> chain;
    for (Node* n = node; n; n = n->parent())
        chain.prepend(n);
    KATreeWidgetItem* item = nullptr;
    for (Node* n : chain) {
        item = itemOf(n);
        if (!item)
            return nullptr;
        if (n != node)
            item->setExpanded(true);
    }
    return item;
}

QAction* tst_KAProjectBrowserTreeWidget::menuAction(const QString& text) const
{
    for (QAction* action : view()->contextMenu()->actions()) {
        if (action->text() == text)
            return action;
        if (action->menu()) {
            for (QAction* sub : action->menu()->actions()) {
                if (sub->text() == text)
                    return sub;
            }
        }
    }
    return nullptr;
}

// The actions as the user reaches them: through the context menu.
void tst_KAProjectBrowserTreeWidget::runAction(const QString& action)
{
    const QString text = action == QLatin1String("new folder") ? QStringLiteral("Folder")
        : action == QLatin1String("rename")                      ? QStringLiteral("Rename")
                                                                 : QStringLiteral("Delete");
    QAction* menuEntry = menuAction(text);
    QVERIFY2(menuEntry, qPrintable(action));
    menuEntry->trigger();
}

// A read-only view refuses silently, a read-only project with a message;
// neither asks anything nor changes the tree.
void tst_KAProjectBrowserTreeWidget::actionOnUserFolder_data()
{
    QTest::addColumn<QString>("readOnly"); // "view", "project" or ""
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("text"); // the message logged, "" for none
    QTest::addColumn<bool>("editor");
    for (const char* action : {"new folder", "rename", "delete"})
        QTest::addRow("read-only view: %s", action) << "view" << action << 0 << QString() << false;
    const int warning = int(MessageLoggerInterface::LevelWarning);
    QTest::newRow("read-only project: new folder")
        << "project" << "new folder" << warning
        << "Impossible to add a new folder because current project is opened as <b>Read Only</b>" << false;
    QTest::newRow("read-only project: rename")
        << "project" << "rename" << warning
        << "Impossible to rename an item from  current project because it is opened as <b>Read Only</b>" << false;
    QTest::newRow("read-only project: delete")
        << "project" << "delete" << int(MessageLoggerInterface::LevelError)
        << " Impossible to remove item from current project because it is opened as <b>Read Only</b>" << false;
    QTest::newRow("writable: rename opens the editor") << "" << "rename" << 0 << QString() << true;
}

void tst_KAProjectBrowserTreeWidget::actionOnUserFolder()
{
    QFETCH(QString, readOnly);
    QFETCH(QString, action);
    QFETCH(int, level);
    QFETCH(QString, text);
    QFETCH(bool, editor);
    Node* user = m_ctrl->createFolder(QStringLiteral("Kept"), folderNode(QStringLiteral("Analysis")));
    QVERIFY(user);
    KATreeWidgetItem* item = expandTo(user);
    QVERIFY(item);
    view()->setCurrentItem(item);
    item->setSelected(true);
    answerWith({0, 0, 0});
    const int children = user->childCount();
    const int analysisChildren = user->parent()->childCount();
    MessageLoggerInterface::returnMe()->clear();

    if (readOnly == QLatin1String("view"))
        m_filter->setReadOnly();
    else if (readOnly == QLatin1String("project"))
        TApplicationData::getInstance()->setCurrentProjectReadOnly(true);
    runAction(action);
    const QList<MessageLoggerInterface::Entry> entries = log();
    QCOMPARE(entries.size(), text.isEmpty() ? 0 : 1);
    if (!text.isEmpty()) {
        QCOMPARE(int(entries.first().level), level);
        QCOMPARE(entries.first().text, text);
    }
    QVERIFY(m_questions.isEmpty());
    QCOMPARE(user->childCount(), children);
    QCOMPARE(user->parent()->childCount(), analysisChildren);
    QCOMPARE(folderNode(QStringLiteral("Analysis/Kept")), user);
    QCOMPARE(itemOf(user), item);
    QCOMPARE(view()->renameEditor() != nullptr, editor);
}

void tst_KAProjectBrowserTreeWidget::contextMenuEntries()
{
    QVERIFY(!MessageLoggerInterface::returnMe()->texts().contains(QStringLiteral("Error while initializing menu")));
    QMenu* menu = view()->contextMenu();
    QVERIFY(menu);
    QCOMPARE(menu->parent(), static_cast<QObject*>(view()));
    const QList<QAction*> actions = menu->actions();
    QCOMPARE(actions.size(), 8);
    QVERIFY(actions.at(1)->isSeparator());
    QVERIFY(actions.at(4)->isSeparator());

    QCOMPARE(actions.at(0)->text(), QStringLiteral("New"));
    QMenu* newMenu = actions.at(0)->menu();
    QVERIFY(newMenu);
    QCOMPARE(newMenu->actions().size(), 1);
    QAction* folder = newMenu->actions().first();
    QCOMPARE(folder->text(), QStringLiteral("Folder"));
    QVERIFY(!folder->icon().pixmap(16, 16).isNull());

    struct Expected {
        int index;
        const char* text;
        bool icon;
        QKeySequence shortcut;
        const char* statusTip;
        const char* toolTip;
    };
    const Expected expected[] = {
        {2, "Rename", false, QKeySequence(Qt::Key_F2), "Rename this data", nullptr},
        {3, "Delete", true, QKeySequence(Qt::Key_Delete), "Delete this data", nullptr},
        {5, "Properties", true, QKeySequence(), nullptr, "Show properties"},
        {6, "Show in the Explorer", true, QKeySequence(), nullptr, "Show in Windows Explorer"},
        {7, "Associate with", true, QKeySequence(), nullptr, "Reparent thiis item to another one"},
    };
    for (const Expected& e : expected) {
        QAction* action = actions.at(e.index);
        QCOMPARE(action->text(), QString::fromUtf8(e.text));
        QCOMPARE(!action->icon().pixmap(16, 16).isNull(), e.icon);
        QCOMPARE(action->shortcut(), e.shortcut);
        if (e.statusTip)
            QCOMPARE(action->statusTip(), QString::fromUtf8(e.statusTip));
        if (e.toolTip)
            QCOMPARE(action->toolTip(), QString::fromUtf8(e.toolTip));
        QVERIFY(!action->menu());
    }
}

void tst_KAProjectBrowserTreeWidget::newFolderOpensEditor()
{
    Node* analysis = folderNode(QStringLiteral("Analysis"));
    KATreeWidgetItem* item = itemOf(analysis);
    QVERIFY(item);
    QVERIFY(!item->isExpanded());
    view()->setCurrentItem(item);

    runAction(QStringLiteral("new folder"));
    Node* created = folderNode(QStringLiteral("Analysis/New folder"));
    QVERIFY(created);
    QCOMPARE(int(static_cast<const KAObject2Folder*>(created->data())->folderKind()), int(KAObjectTypeUserFolder));
    QVERIFY(item->isExpanded());
    QCOMPARE(itemsNamed(view(), QStringLiteral("New folder")), 1);
    KATreeWidgetItem* folderItem = itemOf(created);
    QVERIFY(folderItem);
    QCOMPARE(folderItem->parent(), item);
    QVERIFY2(view()->renameEditor(), "the name editor opens at once");
    QCOMPARE(view()->currentItem(), folderItem);
    QVERIFY(log().isEmpty());
}

void tst_KAProjectBrowserTreeWidget::newFolderOnForeignItemDoesNothing()
{
    auto* foreign = new QTreeWidgetItem(view(), QStringList{QStringLiteral("Foreign")});
    view()->setCurrentItem(foreign);
    const int before = nodesOfType(mgr()->getTree(), KAObjectTypeFolder).size();
    runAction(QStringLiteral("new folder"));
    QCOMPARE(nodesOfType(mgr()->getTree(), KAObjectTypeFolder).size(), before);
    QCOMPARE(foreign->childCount(), 0);
    QVERIFY(!view()->renameEditor());
}

void tst_KAProjectBrowserTreeWidget::deleteSelection_data()
{
    QTest::addColumn<QStringList>("selection");
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<int>("questions");
    QTest::addColumn<QStringList>("deleted");
    QTest::addColumn<QString>("error");

    const QStringList three{"Analysis/F1", "Analysis/F2", "Analysis/F3"};
    QTest::newRow("apply to all ticked at the first question")
        << three << Answers{YesToAll} << 1 << three << QString();
    QTest::newRow("each answered yes") << three << Answers{0, 0, 0} << 3 << three << QString();
    QTest::newRow("first declined") << three << Answers{1} << 1 << QStringList() << QString();
    QTest::newRow("second declined") << three << Answers{0, 1} << 2 << QStringList{"Analysis/F1"} << QString();
    QTest::newRow("one item, no check box") << QStringList{"Analysis/F2"} << Answers{0} << 1
                                            << QStringList{"Analysis/F2"} << QString();
    QTest::newRow("second refused by the project")
        << QStringList{"Analysis/F1", "Indexations", "Numerical arrays/N1"} << Answers{0, 0, 0} << 2
        << QStringList{"Analysis/F1"} << QStringLiteral("Deleting <b>Indexations</b> has failed");
}

void tst_KAProjectBrowserTreeWidget::deleteSelection()
{
    QFETCH(QStringList, selection);
    QFETCH(Answers, answers);
    QFETCH(int, questions);
    QFETCH(QStringList, deleted);
    QFETCH(QString, error);

    Node* analysis = folderNode(QStringLiteral("Analysis"));
    for (const char* name : {"F1", "F2", "F3"})
        QVERIFY(m_ctrl->createFolder(QString::fromUtf8(name), analysis));
    QVERIFY(m_ctrl->createFolder(QStringLiteral("N1"), folderNode(QStringLiteral("Numerical arrays"))));
    QList<KATreeWidgetItem*> items;
    for (const QString& path : selection) {
        KATreeWidgetItem* item = expandTo(folderNode(path));
        QVERIFY2(item, qPrintable(path));
        items.append(item);
    }
    for (KATreeWidgetItem* item : items)
        item->setSelected(true);
    QCOMPARE(view()->selectedItems().size(), selection.size());
    const QString savedTree = mgr()->savedTreePath();
    QVERIFY(!savedTree.isEmpty());
    QFile::remove(savedTree);
    answerWith(answers);
    MessageLoggerInterface::returnMe()->clear();

    runAction(QStringLiteral("delete"));
    QCOMPARE(m_questions.size(), questions);
    const QString firstName = selection.first().section(QLatin1Char('/'), -1);
    QCOMPARE(m_questions.first().kind, QStringLiteral("askForDelete"));
    QCOMPARE(m_questions.first().text, QStringLiteral("Do you really want to remove <b>%1</b>?").arg(firstName));
    for (const Question& q : qAsConst(m_questions))
        QCOMPARE(q.offered, selection.size() >= 2);
    for (const QString& path : selection) {
        const QString name = path.section(QLatin1Char('/'), -1);
        const bool gone = deleted.contains(path);
        QVERIFY2((folderNode(path) == nullptr) == gone, qPrintable(path));
        QCOMPARE(itemsNamed(view(), name), gone ? 0 : 1);
    }
    QStringList errors;
    for (const MessageLoggerInterface::Entry& e : log()) {
        if (e.level == MessageLoggerInterface::LevelError)
            errors.append(e.text);
    }
    QCOMPARE(errors, error.isEmpty() ? QStringList() : QStringList{error});
    QVERIFY2(QFile::exists(savedTree), "the tree is saved in every case");
}

void tst_KAProjectBrowserTreeWidget::selectionMessage()
{
    TestWindow window;
    MainWindowInterface::setInstance(&window);
    KATreeWidgetItem* first = itemOf(folderNode(QStringLiteral("Analysis")));
    KATreeWidgetItem* second = itemOf(folderNode(QStringLiteral("Indexations")));
    QVERIFY(first && second);
    first->setSelected(true);
    QCOMPARE(window.messages.last(), QStringLiteral("1 selected item(s) in the project explorer"));
    second->setSelected(true);
    QCOMPARE(window.messages.last(), QStringLiteral("2 selected item(s) in the project explorer"));
    view()->clearSelection();
    QCOMPARE(window.messages.last(), QStringLiteral("0 selected item(s) in the project explorer"));
}

void tst_KAProjectBrowserTreeWidget::dropMovesObjectsIntoFolder()
{
    Node* analysis = folderNode(QStringLiteral("Analysis"));
    Node* target = m_ctrl->createFolder(QStringLiteral("Target"), analysis);
    QVERIFY(target);
    const QList<Node*> analyses = nodesOfType(analysis, KAObjectTypeAnalysis);
    QVERIFY(analyses.size() >= 2);
    Node* movedA = analyses.at(0);
    Node* movedB = analyses.at(1);
    const QList<Node*> wells = nodesOfType(folderNode(QStringLiteral("Numerical arrays")), KAObjectTypeWell);
    QVERIFY(!wells.isEmpty());
    Node* well = wells.first();
    Node* wellParent = well->parent();
    expandTo(well);
    KATreeWidgetItem* targetItem = expandTo(target);
    QVERIFY(targetItem);
    QCOMPARE(itemsShowing(view(), well->data()).size(), 1);
    QTreeWidgetItem* wellItemParent = itemsShowing(view(), well->data()).first()->parent();

    view()->resize(400, 900);
    view()->show();
    QVERIFY(QTest::qWaitForWindowExposed(view()));
    view()->scrollToItem(targetItem);
    const QPoint position = view()->visualItemRect(targetItem).center();
    QCOMPARE(view()->itemAt(position), static_cast<QTreeWidgetItem*>(targetItem));

    const QList<const KAObject2*> objects{movedA->data(), well->data(), movedB->data()};
    std::unique_ptr<QMimeData> data(
        KAMimeData<QList<const KAObject2*>>::create(nullptr, objects, QStringLiteral("kavelo/data")));
    // As a drag delivers it: enter, move over the folder, drop.
    QDragEnterEvent enter(position, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QDragMoveEvent move(position, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QDropEvent drop(position, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    for (QDropEvent* event : {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move), &drop}) {
        QApplication::sendEvent(view()->viewport(), event);
        QVERIFY2(event->isAccepted(), qPrintable(QString::number(event->type())));
    }

    // The model: both analyses under the folder, the well where it was.
    QCOMPARE(movedA->parent(), target);
    QCOMPARE(movedB->parent(), target);
    QCOMPARE(well->parent(), wellParent);
    bool refusalLogged = false;
    for (const MessageLoggerInterface::Entry& e : log())
        refusalLogged |= e.level == MessageLoggerInterface::LevelError && e.text.contains(well->data()->name().toHtmlEscaped());
    QVERIFY(refusalLogged);

    // The view: one item per object, the moved ones under the folder.
    targetItem = itemOf(target);
    QVERIFY(targetItem);
    targetItem->setExpanded(true);
    for (Node* moved : {movedA, movedB}) {
        const QList<KATreeWidgetItem*> items = itemsShowing(view(), moved->data());
        QCOMPARE(items.size(), 1);
        QCOMPARE(items.first()->parent(), static_cast<QTreeWidgetItem*>(targetItem));
    }
    const QList<KATreeWidgetItem*> wellItems = itemsShowing(view(), well->data());
    QCOMPARE(wellItems.size(), 1);
    QCOMPARE(wellItems.first()->parent(), wellItemParent);
}

QTEST_MAIN(tst_KAProjectBrowserTreeWidget)
#include "tst_kaprojectbrowsertreewidget.moc"
