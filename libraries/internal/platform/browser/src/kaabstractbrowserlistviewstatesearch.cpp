#include "kaabstractbrowserlistviewstatesearch.h"

#include "kaabstractbrowserctrl.h"
#include "kaabstractbrowserlistview.h"
#include "kaobject2.h"
#include "kaprojectbrowserfilterpackage.h"
#include "katreewidgetitem.h"
#include "ttree.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QTimer>
#include <QToolButton>

void KAAbstractBrowserListViewStateSearch::init(KAAbstractBrowserListView* view)
{
    view->setColumnCount(3);
    view->setColumnHidden(1, true);
    // The names take the room; the restore buttons' column keeps its width.
    view->header()->setStretchLastSection(false);
    view->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    view->header()->setMinimumSectionSize(10);
    view->setColumnWidth(2, 10);
}

void KAAbstractBrowserListViewStateSearch::fillTree(KAAbstractBrowserListView* view, TTree<KAObject2*>* root)
{
    if (!root || !root->data())
        return;
    fillTop(view, root);
    reactivateTimer(view)->start();
}

// Project results of a file-system search get a "..." button that brings
// back the project's whole tree.
void KAAbstractBrowserListViewStateSearch::finishFill(KAAbstractBrowserListView* view)
{
    KAAbstractBrowserCtrl* ctrl = controller(view);
    const auto* filter = ctrl ? ctrl->getFilter() : nullptr;
    if (!filter || !filter->contains(FsProjectContent))
        return;
    for (int i = 0; i < view->topLevelItemCount(); ++i) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(view->topLevelItem(i));
        if (!item || !item->node() || !item->node()->data()
            || item->node()->data()->type() != KAObjectTypeProject || view->itemWidget(item, 2))
            continue;
        auto* cell = new QWidget;
        cell->setContentsMargins(0, 0, 0, 0);
        auto* layout = new QHBoxLayout(cell);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addStretch();
        auto* button = new QToolButton(cell);
        button->setText(QStringLiteral("..."));
        button->setAutoRaise(true);
        layout->addWidget(button);
        QObject::connect(button, &QToolButton::clicked, view, &KAAbstractBrowserListView::slotRestoreProjectNode);
        view->setItemWidget(item, 2, cell);
    }
}
