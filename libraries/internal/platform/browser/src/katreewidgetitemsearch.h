#pragma once

#include "kabrowser_export.h"
#include "katreewidgetitem.h"

class KAObject2Search;

// The item of a saved search; activating it runs its text again.
class KABROWSER_EXPORT KATreeWidgetItemSearch : public KATreeWidgetItem
{
public:
    KATreeWidgetItemSearch(QTreeWidgetItem* parentItem, QTreeWidget* view, const KAObject2Search* search);
    const KAObject2Search* search() const;
};
