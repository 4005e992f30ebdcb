#pragma once

#include "kahost_export.h"
#include "katreewidget.h"

#include <QPersistentModelIndex>
#include <QPointer>

class QAction;

// The host's list view: a tree widget with inline renaming of column 0.
//
// F2 (or slotRename()) opens an editor on the current item; the item is made
// editable for the edit only. When the user confirms, the typed text goes to
// renameItem(), whose answer decides whether the item takes the new name.
// Escape, an empty text or an unchanged text leave the item as it was and do
// not call renameItem().
class KAHOST_EXPORT KAListView : public KATreeWidget
{
    Q_OBJECT
public:
    KAListView(QWidget* parent, const QString& name);
    ~KAListView() override;

    // Opens the name editor on the item at once (after a new folder is made,
    // for example). The item becomes the current item. Does nothing for a
    // null item, an item of another view or a disabled item.
    void editItemName(QTreeWidgetItem* item);

    // The F2 action, owned by the view. A subclass that offers renaming in a
    // menu of its own reuses it, so that F2 stays bound to one action.
    QAction* renameAction() const { return m_renameAction; }

    // The open name editor, or null when no rename is under way.
    QWidget* renameEditor() const { return m_renameEditor; }

public slots:
    // Renames the current item (nothing without one, or while an editor is
    // already open). Subclasses add their own checks before calling this.
    virtual void slotRename();

protected:
    // Decides a rename. `name` is the trimmed text the user typed; on
    // success (true) its final value, possibly changed by the override,
    // becomes the item's text. false keeps the old text. The override may
    // rebuild or delete the item; the view copes with that.
    virtual bool renameItem(QTreeWidgetItem* item, QString& name);

    void commitData(QWidget* editor) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    void restoreEditableFlag();
    void finishRename(const QPersistentModelIndex& index, const QString& oldText, const QString& newText);

    QAction* m_renameAction = nullptr;       // owned (child of the view)
    QPointer<QWidget> m_renameEditor;        // not owned: the delegate's editor
    QPersistentModelIndex m_renameIndex;     // the item being renamed
    QString m_renameOldText;
    QString m_renameNewText;
    bool m_renameCommitted = false;
    bool m_renameWasEditable = false;
};
