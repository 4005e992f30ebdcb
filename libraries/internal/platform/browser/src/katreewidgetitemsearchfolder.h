#pragma once

#include "kabrowser_export.h"
#include "katreewidgetitem.h"

class KAObject2SearchFolder;
class QAction;

// The "Saved searches" or "Results" folder item. Its sort key "z" puts the
// branch after the project's own branches; the results folder carries the
// "Save find results" action.
class KABROWSER_EXPORT KATreeWidgetItemSearchFolder : public KATreeWidgetItem
{
public:
    KATreeWidgetItemSearchFolder(QTreeWidgetItem* parentItem, QTreeWidget* view,
                                 const KAObject2SearchFolder* folder, QAction* saveAction);
    QString sortKey() const override;
    QAction* action() const { return m_action; }

private:
    QAction* m_action = nullptr; // not owned: the plug-in's
};
