#pragma once

#include "kahost_export.h"

#include <QList>
#include <QWidget>

class KARibbonGroup;
class QBoxLayout;
class QHBoxLayout;

// A ribbon: groups side by side from the left, room at the right for the
// bar's own commands. The groups belong to the bar.
class KAHOST_EXPORT KARibbonBar : public QWidget
{
    Q_OBJECT
public:
    explicit KARibbonBar(QWidget* parent = nullptr);

    // Appends a group (owned by the bar from now on).
    void addGroup(KARibbonGroup* group);
    // The groups' row, for a caller that inserts a group at an index.
    QBoxLayout* groupLayout() const;
    // The groups in their order on screen.
    QList<KARibbonGroup*> groups() const;

protected:
    // The commands at the far right (close, help), after the free room.
    QHBoxLayout* trailingLayout() const { return m_trailing; }
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* m_groups = nullptr;   // owned by the bar's layout
    QHBoxLayout* m_trailing = nullptr; // owned by the bar's layout
};
