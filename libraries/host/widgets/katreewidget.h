#pragma once

#include "kahost_export.h"

#include <QTreeWidget>

// The host's tree widget: the base of every tree view of the module.
class KAHOST_EXPORT KATreeWidget : public QTreeWidget
{
    Q_OBJECT
public:
    KATreeWidget(QWidget* parent, const QString& name);
    ~KATreeWidget() override;
};
