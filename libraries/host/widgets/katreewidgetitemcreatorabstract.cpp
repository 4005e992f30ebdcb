#include "katreewidgetitemcreatorabstract.h"

KATreeWidgetItemCreatorAbstract::~KATreeWidgetItemCreatorAbstract() = default;
