#pragma once

#include "kahost_export.h"

#include <QTreeWidgetItem>
#include <QVariant>

class KAObject2;
class QIcon;
template <class T> class TTree;

// A tree item that shows one object: its name in column 0, its kind's icon,
// and in the hidden column 1 the key every browser sorts by.
//
// The sort key is built once, when the item is made (and again after a
// rename): folders first, then names compared case-insensitively, accents
// aside, with digit runs in numeric order. Comparing two keys is a plain
// string comparison, which keeps sorting a large branch cheap.
class KAHOST_EXPORT KATreeWidgetItem : public QTreeWidgetItem
{
public:
    enum { ItemType = QTreeWidgetItem::UserType + 260 };
    enum Column { NameColumn = 0, SortKeyColumn = 1 };

    // A top-level item of view (a free item when view is null).
    KATreeWidgetItem(QTreeWidget* view, const KAObject2* object);
    // The last child of parentItem (a free item when parentItem is null).
    KATreeWidgetItem(QTreeWidgetItem* parentItem, const KAObject2* object);
    // The placeholder form, KATreeWidgetItem(item, nullptr, nullptr): an
    // item without object standing for children not built yet; its variable
    // is placeholderVar().
    KATreeWidgetItem(QTreeWidgetItem* parentItem, void* unused, const KAObject2* object);
    ~KATreeWidgetItem() override;

    // The tree node the item shows; not owned.
    TTree<KAObject2*>* node() const { return m_node; }
    void setNode(TTree<KAObject2*>* node) { m_node = node; }

    // The object the item shows; not owned, may be null (placeholder).
    const KAObject2* object() const { return m_object; }

    // A free variable for the view's own use.
    QVariant getVar() const { return m_var; }
    void setVar(const QVariant& var) { m_var = var; }

    // "FAKE": the variable of a placeholder item.
    static QString placeholderVar();
    bool isPlaceholder() const;

    // The key written to the sort column. A subclass that overrides it calls
    // updateSortKey() at the end of its constructor (a base constructor
    // cannot reach the override).
    virtual QString sortKey() const;
    // Writes sortKey() to the sort column, from the current name. In a
    // sorted KATreeWidget the item then moves to its new place.
    void updateSortKey();
    // The text of the sort column, kept by the item.
    const QString& sortText() const { return m_sortKey; }

    // Takes over, in place, what a freshly made item of the same object
    // shows (the data of Qt's item roles in every column, flags, variable and
    // key), so that a view refreshes the item without taking its row out;
    // only what differs is set, so the view repaints only changed cells.
    // Only between plain KATreeWidgetItem items (a subclass may hold more
    // than this copies): false, and nothing done, otherwise. Children, node
    // link and expanded state are left as they are; a changed key moves the
    // item to its place.
    bool refreshFrom(const KATreeWidgetItem& fresh);

    // The default key: "0" for a folder, "1" otherwise, then the name folded
    // to case without accents, each digit run as a number (its length, then
    // its digits, so that numbers compare by value), and
    // after a separator the name itself so that equal-looking names still
    // get a stable order.
    static QString naturalSortKey(const QString& name, bool folder);

    // The icon name of an object's kind (TPixmapCache), null when the kind
    // has no icon.
    static const char* iconName(const KAObject2* object);

    // In the sort column, compares the keys as plain strings.
    bool operator<(const QTreeWidgetItem& other) const override;
    QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant& value) override;

protected:
    // Puts the item under parentItem, else at top level of view (nothing
    // when both are null): at its sorted place in a sorted KATreeWidget.
    void attach(QTreeWidget* view, QTreeWidgetItem* parentItem);

private:
    void initFromObject();

    const KAObject2* m_object = nullptr; // not owned
    TTree<KAObject2*>* m_node = nullptr; // not owned
    QVariant m_var;
    QString m_sortKey;                 // the sort column's text
    const QIcon* m_kindIcon = nullptr; // shown unless an icon is set; not owned
};
