#include "kalistview.h"

#include "katreewidgetitem.h"

#include <QAction>
#include <QMetaProperty>

KAListView::KAListView(QWidget* parent, const QString& name)
    : KATreeWidget(parent, name)
{
    // Editing happens only through the rename path below, which controls
    // the editable flag and the outcome.
    setEditTriggers(QAbstractItemView::NoEditTriggers);

    m_renameAction = new QAction(tr("Rename", "Renommer"), this);
    m_renameAction->setShortcut(QKeySequence(Qt::Key_F2));
    m_renameAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(m_renameAction);
    // Through a lambda so that an overriding slotRename() of a subclass runs.
    connect(m_renameAction, &QAction::triggered, this, [this] { slotRename(); });
}

KAListView::~KAListView() = default;

void KAListView::slotRename()
{
    editItemName(currentItem());
}

void KAListView::editItemName(QTreeWidgetItem* item)
{
    if (!item || item->treeWidget() != this || !(item->flags() & Qt::ItemIsEnabled))
        return;
    // Making the item current commits and closes an editor open elsewhere.
    if (currentItem() != item)
        setCurrentItem(item);
    if (state() == QAbstractItemView::EditingState)
        return;

    m_renameIndex = QPersistentModelIndex(indexFromItem(item, 0));
    m_renameOldText = item->text(0);
    m_renameNewText.clear();
    m_renameCommitted = false;
    m_renameWasEditable = item->flags() & Qt::ItemIsEditable;
    if (!m_renameWasEditable)
        item->setFlags(item->flags() | Qt::ItemIsEditable);

    // The delegate makes its editor as a direct child of the viewport: the
    // one that was not there before is ours.
    const QList<QWidget*> before = viewport()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    scrollToItem(item);
    editItem(item, 0);
    m_renameEditor = nullptr;
    if (state() == QAbstractItemView::EditingState) {
        const QList<QWidget*> after = viewport()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget* w : after) {
            if (!before.contains(w)) {
                m_renameEditor = w;
                break;
            }
        }
    }
    if (!m_renameEditor) {
        restoreEditableFlag();
        m_renameIndex = QPersistentModelIndex();
    }
}

bool KAListView::renameItem(QTreeWidgetItem* item, QString& name)
{
    Q_UNUSED(item);
    Q_UNUSED(name);
    return true;
}

void KAListView::commitData(QWidget* editor)
{
    if (!editor || editor != m_renameEditor) {
        KATreeWidget::commitData(editor);
        return;
    }
    // The typed text is kept aside and decided on once the editor is closed:
    // the model never holds a name that renameItem() has not accepted, and a
    // dialog shown by renameItem() cannot re-enter the editor.
    const QMetaProperty user = editor->metaObject()->userProperty();
    m_renameNewText = user.isValid() ? user.read(editor).toString() : QString();
    m_renameCommitted = true;
}

void KAListView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
    if (!editor || editor != m_renameEditor) {
        KATreeWidget::closeEditor(editor, hint);
        return;
    }
    // The flag goes back before the base class handles Tab, which would
    // otherwise open an editor on the next editable item.
    restoreEditableFlag();
    const QPersistentModelIndex index = m_renameIndex;
    const QString oldText = m_renameOldText;
    const QString newText = m_renameNewText;
    const bool committed = m_renameCommitted;
    m_renameEditor = nullptr;
    m_renameIndex = QPersistentModelIndex();
    m_renameCommitted = false;
    KATreeWidget::closeEditor(editor, hint);
    if (committed)
        finishRename(index, oldText, newText);
}

void KAListView::restoreEditableFlag()
{
    QTreeWidgetItem* item = m_renameIndex.isValid() ? itemFromIndex(m_renameIndex) : nullptr;
    if (item && !m_renameWasEditable)
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
}

void KAListView::finishRename(const QPersistentModelIndex& index, const QString& oldText, const QString& newText)
{
    QTreeWidgetItem* item = index.isValid() ? itemFromIndex(index) : nullptr;
    if (!item)
        return;
    const QString typed = newText.trimmed();
    if (typed.isEmpty() || typed == oldText) {
        if (item->text(0) != oldText)
            item->setText(0, oldText);
        return;
    }
    QString name = typed;
    const bool accepted = renameItem(item, name);
    // renameItem() may have rebuilt the branch: look the item up again.
    item = index.isValid() ? itemFromIndex(index) : nullptr;
    if (!item)
        return;
    if (!accepted || name.isEmpty()) {
        item->setText(0, oldText);
        return;
    }
    item->setText(0, name);
    if (auto* treeItem = dynamic_cast<KATreeWidgetItem*>(item))
        treeItem->updateSortKey();
}
