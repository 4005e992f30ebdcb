#include "applicationinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowserobserver.h"
#include "kamimedata.h"
#include "kaobject2.h"
#include "kaprojectbrowserabstract.h"
#include "katreewidgetitem.h"
#include "projectmgrinterface.h"
#include "testfixture.h"
#include "texternalprocess.h"
#include "ttree.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QTreeWidgetItemIterator>
#include <QUrl>

#include <memory>

namespace {

using Node = TTree<KAObject2*>;

bool touch(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}

QStringList childTexts(const QTreeWidgetItem* item)
{
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i)
        texts << item->child(i)->text(0);
    texts.sort();
    return texts;
}

// A real double-click: QTest's double-click event alone lacks the press that
// comes first.
void doubleClick(QAbstractItemView* view, const QPoint& pos)
{
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
}

class OpeningObserver : public KAFileSystemBrowserObserver
{
public:
    bool fsObjectOpened(const KAObject2* object) override
    {
        opened << object;
        return true;
    }
    QList<const KAObject2*> opened;
};

// Records the actions of every menu that pops up and closes it at once, so
// that a context menu never blocks the test.
class MenuCatcher : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            if (auto* menu = qobject_cast<QMenu*>(watched)) {
                QStringList texts;
                for (QAction* action : menu->actions())
                    texts << action->text();
                menus << texts;
                QTimer::singleShot(0, menu, &QMenu::close);
            }
        }
        return false;
    }
    QList<QStringList> menus;
};

} // namespace

// The file-system tree widget: double-click, F5, the context menu, drags.
class tst_KAFileSystemBrowserEditor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void widgetSetUp();
    void collapsedTopLevelFolderExpands();
    void doubleClickTogglesUnopenedItem();
    void doubleClickOpenedByObserverDoesNotExpand();
    void f5RebuildsTheTree();
    void contextMenu_data();
    void contextMenu();
    void explorerActionOpensSelectedFolder();
    void dragCarriesObjectsAndFileUrls();

private:
    KAFileSystemBrowserEditor* makeView();
    QTreeWidgetItem* itemNamed(const QString& text) const;

    std::unique_ptr<TestFixture> m_fixture;
    std::unique_ptr<KAFileSystemBrowserFilterPackage> m_filter;
    std::unique_ptr<KAFileSystemBrowserCtrl> m_ctrl;
    std::unique_ptr<QWidget> m_parent;
    QString m_root;
    QList<QUrl> m_opened;
};

void tst_KAFileSystemBrowserEditor::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAFileSystemBrowserEditor::init()
{
    m_fixture = std::make_unique<TestFixture>();
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({});
    m_root = m_fixture->filePath("root");
    QVERIFY(QDir().mkpath(m_root + "/alpha"));
    QVERIFY(QDir().mkpath(m_root + "/beta/gamma"));
    QVERIFY(touch(m_root + "/a.txt"));
    QVERIFY(touch(m_root + "/b c.csv"));
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
    m_filter->setRootForced(m_root);
    m_opened.clear();
    TExternalProcess::setOpener([this](const QUrl& url) {
        m_opened << url;
        return true;
    });
}

void tst_KAFileSystemBrowserEditor::cleanup()
{
    m_ctrl.reset();
    m_parent.reset();
    m_filter.reset();
    kaClearAliases();
    TExternalProcess::setOpener({});
    m_fixture.reset();
}

KAFileSystemBrowserEditor* tst_KAFileSystemBrowserEditor::makeView()
{
    m_ctrl = std::make_unique<KAFileSystemBrowserCtrl>(QStringLiteral("tst_editor"));
    m_ctrl->init(m_filter.get(), nullptr, false);
    m_parent = std::make_unique<QWidget>();
    m_parent->resize(400, 600);
    auto* view = static_cast<KAFileSystemBrowserEditor*>(m_ctrl->initView(m_parent.get()));
    view->resize(400, 600);
    m_parent->show();
    if (!QTest::qWaitForWindowExposed(m_parent.get()))
        return nullptr;
    return view;
}

QTreeWidgetItem* tst_KAFileSystemBrowserEditor::itemNamed(const QString& text) const
{
    for (QTreeWidgetItemIterator it(m_ctrl->view()); *it; ++it) {
        if ((*it)->text(0) == text)
            return *it;
    }
    return nullptr;
}

void tst_KAFileSystemBrowserEditor::widgetSetUp()
{
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    QCOMPARE(view->objectName(), QStringLiteral("KAFileSystemBrowserEditor"));
    QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);
    QVERIFY(view->dragEnabled());
    QVERIFY(view->isColumnHidden(1));
    QCOMPARE(view->sortColumn(), 1);
    // In the order of the sort keys (names without case), not of the disk.
    QTreeWidgetItem* root = view->topLevelItem(0);
    QStringList order;
    for (int i = 0; i < root->childCount(); ++i)
        order << root->child(i)->text(0);
    QCOMPARE(order, (QStringList{"a.txt", "alpha", "b c.csv", "beta"}));
}

// A top-level folder not listed yet (here an alias folder) shows an
// expander, and expanding it lists the folder.
void tst_KAFileSystemBrowserEditor::collapsedTopLevelFolderExpands()
{
    m_filter = std::make_unique<KAFileSystemBrowserFilterPackage>();
    m_filter->remove(FsDrives);
    m_filter->remove(FsUserFolders);
    QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Samples"), m_root));
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    QCOMPARE(view->topLevelItemCount(), 1);
    QTreeWidgetItem* top = view->topLevelItem(0);
    QCOMPARE(top->text(0), QStringLiteral("Samples"));
    QVERIFY(!top->isExpanded());
    QCOMPARE(top->childCount(), 1);
    QVERIFY(top->child(0)->text(0).isEmpty()); // a placeholder, not an entry

    top->setExpanded(true);
    QCOMPARE(childTexts(top), (QStringList{"a.txt", "alpha", "b c.csv", "beta"}));
    QVERIFY(itemNamed(QStringLiteral("beta"))->childCount() == 1); // its own expander
}

void tst_KAFileSystemBrowserEditor::doubleClickTogglesUnopenedItem()
{
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    QTreeWidgetItem* beta = itemNamed(QStringLiteral("beta"));
    QVERIFY(beta);
    QVERIFY(!beta->isExpanded());
    const QPoint centre = view->visualItemRect(beta).center();

    doubleClick(view, centre);
    QVERIFY(beta->isExpanded());
    QCOMPARE(childTexts(beta), QStringList{"gamma"}); // listed on the way

    doubleClick(view, centre);
    QVERIFY(!beta->isExpanded());
}

void tst_KAFileSystemBrowserEditor::doubleClickOpenedByObserverDoesNotExpand()
{
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    OpeningObserver observer;
    m_ctrl->registerObserver(&observer);
    auto* beta = dynamic_cast<KATreeWidgetItem*>(itemNamed(QStringLiteral("beta")));
    QVERIFY(beta);
    doubleClick(view, view->visualItemRect(beta).center());
    QCOMPARE(observer.opened, QList<const KAObject2*>{beta->object()});
    QVERIFY(!beta->isExpanded());
    m_ctrl->unregisterObserver(&observer);
}

void tst_KAFileSystemBrowserEditor::f5RebuildsTheTree()
{
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    QVERIFY(QDir().mkpath(m_root + "/late"));
    QVERIFY(!itemNamed(QStringLiteral("late")));

    view->setFocus();
    QTest::keyClick(view, Qt::Key_F5);
    Node* forced = m_ctrl->getTree()->firstChild();
    bool inTree = false;
    for (Node* c = forced->firstChild(); c; c = c->nextSibling())
        inTree = inTree || (c->data() && c->data()->name() == QLatin1String("late"));
    QVERIFY(inTree);
    QCOMPARE(view->topLevelItemCount(), 1);
    QVERIFY(itemNamed(QStringLiteral("late")));
}

void tst_KAFileSystemBrowserEditor::contextMenu_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<bool>("offered");
    QTest::newRow("one folder selected") << QStringList{"beta"} << true << true;
    QTest::newRow("nothing selected") << QStringList{} << true << true;
    QTest::newRow("two items selected") << QStringList{"alpha", "beta"} << true << false;
    QTest::newRow("folder creation disallowed") << QStringList{"beta"} << false << false;
}

void tst_KAFileSystemBrowserEditor::contextMenu()
{
    QFETCH(QStringList, selected);
    QFETCH(bool, allowed);
    QFETCH(bool, offered);
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    m_ctrl->allowCreateFolder(allowed);
    QCOMPARE(m_ctrl->isCreateFolderEnabled(), allowed);
    view->clearSelection();
    for (const QString& name : selected) {
        QTreeWidgetItem* item = itemNamed(name);
        QVERIFY(item);
        item->setSelected(true);
    }

    MenuCatcher catcher;
    qApp->installEventFilter(&catcher);
    const QPoint pos = view->visualItemRect(itemNamed(QStringLiteral("beta"))).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, view->viewport()->mapToGlobal(pos));
    QApplication::sendEvent(view->viewport(), &event);
    qApp->removeEventFilter(&catcher);

    const QList<QStringList> expected = offered ? QList<QStringList>{{QStringLiteral("Open Windows Explorer")}}
                                                : QList<QStringList>{};
    QCOMPARE(catcher.menus, expected);
    QVERIFY(m_opened.isEmpty()); // offering is not opening
}

void tst_KAFileSystemBrowserEditor::explorerActionOpensSelectedFolder()
{
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    QCOMPARE(view->explorerAction()->text(), QStringLiteral("Open Windows Explorer"));
    itemNamed(QStringLiteral("beta"))->setSelected(true);
    view->explorerAction()->trigger();
    QCOMPARE(m_opened.size(), 1);
    QCOMPARE(m_opened.first().toLocalFile(), m_root + "/beta");

    // Nothing selected: the top-level folder.
    view->clearSelection();
    view->explorerAction()->trigger();
    QCOMPARE(m_opened.size(), 2);
    QCOMPARE(m_opened.last().toLocalFile(), m_root);
}

void tst_KAFileSystemBrowserEditor::dragCarriesObjectsAndFileUrls()
{
    KAFileSystemBrowserEditor* view = makeView();
    QVERIFY(view);
    auto* a = dynamic_cast<KATreeWidgetItem*>(itemNamed(QStringLiteral("a.txt")));
    auto* bc = dynamic_cast<KATreeWidgetItem*>(itemNamed(QStringLiteral("b c.csv")));
    QVERIFY(a && bc);
    a->setSelected(true);
    bc->setSelected(true);

    const QModelIndexList indexes = view->selectionModel()->selectedIndexes();
    std::unique_ptr<QMimeData> data(view->model()->mimeData(indexes));
    QVERIFY(data);
    QVERIFY(data->hasFormat(QStringLiteral("kavelo/data")));
    auto* objects = dynamic_cast<KAMimeData<QList<const KAObject2*>>*>(data.get());
    QVERIFY(objects);
    QCOMPARE(objects->value().size(), 2);
    QVERIFY(objects->value().contains(a->object()));
    QVERIFY(objects->value().contains(bc->object()));

    QStringList files;
    for (const QUrl& url : data->urls()) {
        QVERIFY(url.isLocalFile());
        files << url.toLocalFile();
    }
    files.sort();
    QCOMPARE(files, (QStringList{m_root + "/a.txt", m_root + "/b c.csv"}));
}

QTEST_MAIN(tst_KAFileSystemBrowserEditor)
#include "tst_kafilesystembrowsereditor.moc"
