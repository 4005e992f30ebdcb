#include "katreewidget.h"

KATreeWidget::KATreeWidget(QWidget* parent, const QString& name)
    : QTreeWidget(parent)
{
    setObjectName(name);
}

KATreeWidget::~KATreeWidget() = default;
