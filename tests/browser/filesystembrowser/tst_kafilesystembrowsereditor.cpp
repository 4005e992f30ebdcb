#include "applicationinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowsereditor.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowserobserver.h"
#include "kaprojectbrowserabstract.h"
#include "katreewidgetitem.h"
#include "testfixture.h"
#include "texternalprocess.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <memory>

// The file-system tree widget on an alias folder. The test is also the observer
// that opens objects, and it reads and closes every menu that pops up.
class tst_KAFileSystemBrowserEditor : public QObject, public KAFileSystemBrowserObserver
{
    Q_OBJECT

public:
    bool fsObjectOpened(const KAObject2* object) override { m_openedObjects << object; return true; }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (auto* menu = event->type() == QEvent::Show ? qobject_cast<QMenu*>(watched) : nullptr) {
            m_menus << QStringList();
            for (QAction* action : menu->actions())
                m_menus.last() << action->text();
            QTimer::singleShot(0, menu, &QMenu::close);
        }
        return false;
    }

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void cleanup() { kaClearAliases(); TExternalProcess::setOpener({}); }
    void expandDoubleClickMenuDragAndF5();

private:
    QList<const KAObject2*> m_openedObjects;
    QList<QStringList> m_menus;
};

// On the alias folder "Samples" (alpha, beta/gamma, a.txt and "b c.csv"): a
// top-level folder not listed yet shows an expander; expanding it lists the
// folder in the order of the sort keys (names without case), not of the
// disk. A double-click toggles a folder, unless an observer opens it.
void tst_KAFileSystemBrowserEditor::expandDoubleClickMenuDragAndF5()
{
    TestFixture fixture;
    QFile::remove(KAProjectBrowserAbstract::treeStatePath());
    const QString root = fixture.filePath("root");
    QVERIFY(QDir().mkpath(root + "/alpha") && QDir().mkpath(root + "/beta/gamma"));
    for (const char* file : {"/a.txt", "/b c.csv"})
        QVERIFY(QFile(root + file).open(QIODevice::WriteOnly));
    QVERIFY(ApplicationInterface::returnMe()->aliasFolderMgr()->addAlias(QStringLiteral("Samples"), root));
    QList<QUrl> opened;
    TExternalProcess::setOpener([&opened](const QUrl& url) { opened << url; return true; });
    KAFileSystemBrowserFilterPackage filter;
    filter.remove(FsDrives);
    filter.remove(FsUserFolders);
    QWidget parent;
    KAFileSystemBrowserCtrl ctrl(QStringLiteral("tst_editor")); // goes before the view's parent
    ctrl.init(&filter, nullptr, false);
    auto* view = static_cast<KAFileSystemBrowserEditor*>(ctrl.initView(&parent));
    view->resize(400, 600);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    const auto itemNamed = [view](const QString& text) {
        return view->findItems(text, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    };
    const auto childTexts = [](const QTreeWidgetItem* item) {
        QStringList texts;
        for (int i = 0; i < item->childCount(); ++i)
            texts << item->child(i)->text(0);
        return texts;
    };

    QTreeWidgetItem* top = view->topLevelItem(0);
    QVERIFY(top->text(0) == QLatin1String("Samples") && !top->isExpanded());
    QCOMPARE(childTexts(top), QStringList{QString()}); // a placeholder, not an entry
    top->setExpanded(true);
    QCOMPARE(childTexts(top), (QStringList{"a.txt", "alpha", "b c.csv", "beta"}));

    auto* beta = dynamic_cast<KATreeWidgetItem*>(itemNamed(QStringLiteral("beta")));
    QCOMPARE(childTexts(beta), QStringList{QString()}); // its own expander
    // A real double-click: QTest's double-click event lacks the press before.
    const QPoint centre = view->visualItemRect(beta).center();
    const auto doubleClick = [view, centre] {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, centre);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, centre);
    };
    doubleClick();
    QVERIFY(beta->isExpanded());
    QCOMPARE(childTexts(beta), QStringList{"gamma"}); // listed on the way
    beta->setExpanded(false);
    ctrl.registerObserver(this);
    doubleClick();
    QCOMPARE(m_openedObjects, QList<const KAObject2*>{beta->object()});
    QVERIFY(!beta->isExpanded());
    ctrl.unregisterObserver(this);

    // The explorer entry is offered for one folder or none, never for more,
    // and only while folders may be made; offering is not opening. It opens
    // the selected folder.
    const auto menusFor = [&](const QStringList& selected, bool allowed) {
        ctrl.allowCreateFolder(allowed);
        view->clearSelection();
        for (const QString& name : selected)
            itemNamed(name)->setSelected(true);
        qApp->installEventFilter(this);
        const QPoint pos = view->visualItemRect(itemNamed(QStringLiteral("beta"))).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, view->viewport()->mapToGlobal(pos));
        QApplication::sendEvent(view->viewport(), &event);
        qApp->removeEventFilter(this);
        return std::exchange(m_menus, {});
    };
    const QList<QStringList> offered{{"Open Windows Explorer"}};
    QCOMPARE(menusFor({"beta"}, true), offered);
    QCOMPARE(menusFor({}, true), offered);
    QCOMPARE(menusFor({"alpha", "beta"}, true), QList<QStringList>{});
    QCOMPARE(menusFor({"beta"}, false), QList<QStringList>{});
    QVERIFY(opened.isEmpty());
    view->clearSelection();
    itemNamed(QStringLiteral("beta"))->setSelected(true);
    view->explorerAction()->trigger();
    QCOMPARE(opened, QList<QUrl>{QUrl::fromLocalFile(root + "/beta")});

    // A drag carries, besides the objects, their files' URLs.
    view->clearSelection();
    itemNamed(QStringLiteral("a.txt"))->setSelected(true);
    itemNamed(QStringLiteral("b c.csv"))->setSelected(true);
    std::unique_ptr<QMimeData> data(view->model()->mimeData(view->selectionModel()->selectedIndexes()));
    QVERIFY(data && data->hasFormat(QStringLiteral("kavelo/data")));
    QCOMPARE(data->urls(),
             (QList<QUrl>{QUrl::fromLocalFile(root + "/a.txt"), QUrl::fromLocalFile(root + "/b c.csv")}));

    // F5 lists the folders again.
    QVERIFY(QDir().mkpath(root + "/late"));
    view->setFocus();
    QTest::keyClick(view, Qt::Key_F5);
    QVERIFY(itemNamed(QStringLiteral("late")));
}

QTEST_MAIN(tst_KAFileSystemBrowserEditor)
#include "tst_kafilesystembrowsereditor.moc"
