#pragma once

#include "kahost_export.h"

#include <QList>
#include <QTreeWidget>

// The host's tree widget: the base of every tree view of the module.
//
// Sorting is the widget's own. Qt's sorting of a tree widget re-sorts the
// whole tree after any insertion, however small; here, while sorting is on,
// an item goes straight to its place when it is inserted through
// insertItem() or insertItems() (the items of KATreeWidgetItem place
// themselves), and an item whose sort text changes moves to its new place.
// Qt's own sorting flag stays off: setSortingEnabled() and
// isSortingEnabled() below stand for it (same header behaviour, and
// switching sorting on sorts the tree by the header's sort indicator, as
// Qt does). The order is the one sortItems() gives: by the text of the sort
// column, the key of a KATreeWidgetItem in its key column, equal texts kept
// in insertion order.
class KAHOST_EXPORT KATreeWidget : public QTreeWidget
{
    Q_OBJECT
public:
    KATreeWidget(QWidget* parent, const QString& name);
    ~KATreeWidget() override;

    void setSortingEnabled(bool enable);
    bool isSortingEnabled() const { return m_sorting; }

    // Inserts a free item under parent (at top level for a null parent): at
    // its sorted place while sorting is on, else last.
    void insertItem(QTreeWidgetItem* parent, QTreeWidgetItem* item);
    // Inserts free items under parent (at top level for a null parent).
    // While sorting is on they are sorted among themselves once and merged
    // with the children already there, in as few insertions as there are
    // runs; else they are appended in the given order.
    void insertItems(QTreeWidgetItem* parent, QList<QTreeWidgetItem*> items);
    // Where item goes among the children of parent (top level for a null
    // parent) in the widget's order; item itself, if it is one of them, is
    // not counted. hint, when it is a right place, is kept: an item put back
    // where it was stays there among equals.
    int sortedIndex(QTreeWidgetItem* parent, const QTreeWidgetItem* item, int hint = -1) const;
    // Moves an item of the widget whose sort text changed to its place
    // (nothing while sorting is off or when it is in place already).
    void placeItem(QTreeWidgetItem* item);
    // True when a goes before b in the widget's order.
    bool goesBefore(const QTreeWidgetItem* a, const QTreeWidgetItem* b) const;

    // QWidget's, which it hides: while updates are off the rows are laid out
    // once, when they come back, rather than after each insertion (a layout
    // walks every shown row). Updates switched back on through QWidget
    // itself get the layout at the next paint.
    void setUpdatesEnabled(bool enable);
    void doItemsLayout() override;

protected:
    bool viewportEvent(QEvent* event) override;

private:
    QTreeWidgetItem* container(QTreeWidgetItem* parent) const;
    const QTreeWidgetItem* container(const QTreeWidgetItem* parent) const;

    bool m_sorting = false;
    bool m_layoutDeferred = false;
};
