// The project tree view on a large branch: 50,000 analyses, each with two
// signals behind its placeholder.
//
//   expand-50k        expanding the Analysis folder item of a project tree
//                     widget until the sorted branch is shown, against a
//                     QTreeView over a QStandardItemModel given the same rows,
//                     sort keys and one child row each, sorted and expanded
//   refresh-node-50k  refreshNode of one analysis in the view showing the
//                     50,000 items, with the event loop run until it has
//                     nothing left to do (the view's delayed layout, sort or
//                     repaint that the call set off), against the walk over
//                     every item that a lookup without index does
//   refresh-node-50k-call  the refreshNode call alone, same baseline
//
// Both sides of expand-50k also run the event loop until it is idle.
#include "benchsupport.h"

#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "kaprojectbrowsertreewidget.h"
#include "katreewidgetitem.h"
#include "tdatabase.h"
#include "ttree.h"

#include <QApplication>
#include <QStandardItemModel>
#include <QTreeView>
#include <QTreeWidgetItemIterator>


namespace {

using Node = TTree<KAObject2*>;

KATreeWidgetItem* childItemShowing(QTreeWidgetItem* parent, const KAObject2* object)
{
    for (int i = 0; parent && i < parent->childCount(); ++i) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(parent->child(i));
        if (item && item->object() == object)
            return item;
    }
    return nullptr;
}

// The lookup of an item by a walk over the whole view.
KATreeWidgetItem* walkFor(QTreeWidget* view, const KAObject2* object)
{
    for (QTreeWidgetItemIterator it(view); *it; ++it) {
        auto* item = dynamic_cast<KATreeWidgetItem*>(*it);
        if (item && item->object() == object)
            return item;
    }
    return nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    Bench::initEnvironment();
    QApplication app(argc, argv);

    TSampleGenerator::Options options;
    options.projects = 1;
    options.analyses = 50000;
    options.signalsPerAnalysis = 2;
    options.peaksPerSignal = 0;
    options.wells = 0;
    options.groups = 0;
    Bench::SampleProject sample(QStringLiteral("List 50k"), options, 42);
    if (!sample.isValid()) {
        Bench::note("sample project not made: %s", qPrintable(sample.error()));
        return 1;
    }
    Bench::note("generated %d objects in %.0f ms", sample.objectCount(), sample.generationMs());

    KAProjectBrowserFilterPackage filter;
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, sample.project(), true);
    KAProjectBrowserMgr* mgr = ctrl.mgrList().first();
    Node* root = mgr->getTree();
    Node* analyses = mgr->getTree(KAObjectTypeAnalysis);

    KAProjectBrowserTreeWidget widget(&ctrl);
    widget.resize(400, 700);
    widget.show();
    QTreeView baselineView;
    baselineView.resize(400, 700);
    baselineView.setHeaderHidden(true);
    baselineView.setUniformRowHeights(true); // as our view has
    baselineView.show();
    // A QStandardItemModel of 50,000 rows takes seconds to destroy once it
    // has been sorted (Qt's item bookkeeping goes quadratic), so the
    // baseline's models are left to the end of the process.
    QStandardItemModel* model = nullptr;

    // The baseline gets the same rows with their sort keys, made in advance.
    QStringList names, keys;
    for (const KAObject2* analysis : sample.db()->getObjectLst(KAObjectTypeAnalysis)) {
        names.append(analysis->name());
        keys.append(KATreeWidgetItem::naturalSortKey(analysis->name(), false));
    }

    KATreeWidgetItem* analysisItem = nullptr;
    int expandedItems = 0;
    // The project expanded, its Analysis folder collapsed behind its
    // placeholder; an empty model on the baseline view.
    auto reset = [&]() {
        widget.clear();
        root->setExpanded(true);
        analyses->setExpanded(false);
        widget.fillTree(root);
        analysisItem = childItemShowing(widget.topLevelItem(0), analyses->data());
        baselineView.setModel(nullptr);
        model = new QStandardItemModel; // not freed: see above
        model->setColumnCount(2);
        baselineView.setModel(model);
        baselineView.setColumnHidden(1, true);
        QApplication::processEvents();
    };
    reset();
    if (!analysisItem) {
        Bench::note("no Analysis folder item in the view");
        return 1;
    }

    Bench::compare(
        QStringLiteral("expand-50k"), 5,
        [&]() {
            analysisItem->setExpanded(true);
            Bench::settle();
            expandedItems = analysisItem->childCount();
        },
        [&]() {
            auto* folder = new QStandardItem(QStringLiteral("Analysis"));
            for (int i = 0; i < names.size(); ++i) {
                auto* row = new QStandardItem(names.at(i));
                row->appendRow(new QStandardItem(QStringLiteral("FAKE")));
                folder->appendRow({row, new QStandardItem(keys.at(i))});
            }
            model->appendRow({folder, new QStandardItem(QStringLiteral("0"))});
            model->sort(1);
            baselineView.expand(folder->index());
            Bench::settle();
        },
        reset);
    Bench::note("expanded: %d items under the Analysis folder", expandedItems);

    // The view keeps the 50,000 items shown for the refreshes.
    reset();
    analysisItem->setExpanded(true);
    Bench::settle();
    const QList<const KAObject2*> list = sample.db()->getObjectLst(KAObjectTypeAnalysis);
    QVector<Node*> targets;
    for (int i = 0; i < 21; ++i)
        targets.append(mgr->findObjectInTree(list.at((i * 7919 + 17) % list.size()), analyses));
    targets.removeAll(nullptr);

    QVector<double> refreshes, calls, walks;
    int passes = 0;
    for (Node* node : qAsConst(targets)) {
        refreshes.append(Bench::timeMs([&]() {
            widget.refreshNode(node);
            passes = qMax(passes, Bench::settle());
        }));
        calls.append(Bench::timeMs([&]() { widget.refreshNode(node); }));
        Bench::settle();
        walks.append(Bench::timeMs([&]() { walkFor(&widget, node->data()); }));
    }
    Bench::note("event loop passes after a refresh: at most %d", passes);
    Bench::report(QStringLiteral("refresh-node-50k"), Bench::medianMs(refreshes), Bench::medianMs(walks));
    Bench::report(QStringLiteral("refresh-node-50k-call"), Bench::medianMs(calls), Bench::medianMs(walks));
    return 0;
}
