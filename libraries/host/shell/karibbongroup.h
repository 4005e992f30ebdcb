#pragma once

#include "kahost_export.h"

#include <QWidget>

class QAction;
class QHBoxLayout;
class QIcon;
class QLabel;
class QToolButton;

// A titled group of a ribbon: large tool buttons (icon above text) in a
// row, the group title drawn below them, a separator line at its right.
class KAHOST_EXPORT KARibbonGroup : public QWidget
{
    Q_OBJECT
public:
    explicit KARibbonGroup(const QString& title, QWidget* parent = nullptr);

    QString title() const;
    void setTitle(const QString& title);

    // A large button running the action (not owned: the action's owner
    // keeps it; the button is the group's).
    QToolButton* addAction(QAction* action);
    // A large button with no action behind it; the caller connects it.
    QToolButton* addButton(const QString& text, const QIcon& icon, const QString& toolTip);
    // Any widget, owned by the group from now on.
    void addWidget(QWidget* widget);

    // The row the buttons and widgets go to.
    QHBoxLayout* contentLayout() const { return m_content; }

    static QSize largeIconSize() { return QSize(32, 32); }

protected:
    // The title row, for groups that put a control beside the title.
    QHBoxLayout* titleLayout() const { return m_titleRow; }
    void paintEvent(QPaintEvent* event) override;

private:
    QToolButton* makeButton();

    QHBoxLayout* m_content = nullptr;  // owned by the group's layout
    QHBoxLayout* m_titleRow = nullptr; // owned by the group's layout
    QLabel* m_title = nullptr;         // owned through Qt parenthood
};
