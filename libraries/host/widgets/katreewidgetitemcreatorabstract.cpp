#include "katreewidgetitemcreatorabstract.h"

KATreeWidgetItemCreatorAbstract::~KATreeWidgetItemCreatorAbstract() = default;

QVector<KAObjectType> KATreeWidgetItemCreatorAbstract::itemKinds() const
{
    return {};
}
