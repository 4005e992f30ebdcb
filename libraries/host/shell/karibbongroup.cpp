#include "karibbongroup.h"

#include <QAction>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

KARibbonGroup::KARibbonGroup(const QString& title, QWidget* parent)
    : QWidget(parent)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 3, 6, 2);
    column->setSpacing(2);

    m_content = new QHBoxLayout;
    m_content->setContentsMargins(0, 0, 0, 0);
    m_content->setSpacing(2);
    column->addLayout(m_content, 1);

    m_titleRow = new QHBoxLayout;
    m_titleRow->setContentsMargins(0, 0, 0, 0);
    m_titleRow->setSpacing(2);
    m_title = new QLabel(title, this);
    m_title->setObjectName(QStringLiteral("kaRibbonGroupTitle"));
    m_title->setTextFormat(Qt::PlainText);
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setForegroundRole(QPalette::PlaceholderText);
    QFont font = m_title->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    m_title->setFont(font);
    m_titleRow->addWidget(m_title, 1);
    column->addLayout(m_titleRow);
}

QString KARibbonGroup::title() const
{
    return m_title->text();
}

void KARibbonGroup::setTitle(const QString& title)
{
    m_title->setText(title);
}

QToolButton* KARibbonGroup::makeButton()
{
    auto* button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setIconSize(largeIconSize());
    button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    m_content->addWidget(button);
    return button;
}

QToolButton* KARibbonGroup::addAction(QAction* action)
{
    QToolButton* button = makeButton();
    // The button also carries the action, so its shortcut works while the
    // ribbon is shown.
    button->setDefaultAction(action);
    return button;
}

QToolButton* KARibbonGroup::addButton(const QString& text, const QIcon& icon, const QString& toolTip)
{
    QToolButton* button = makeButton();
    button->setText(text);
    button->setIcon(icon);
    button->setToolTip(toolTip);
    return button;
}

void KARibbonGroup::addWidget(QWidget* widget)
{
    if (widget)
        m_content->addWidget(widget);
}

void KARibbonGroup::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    QPainter painter(this);
    QColor line = palette().color(QPalette::Mid);
    line.setAlpha(140);
    painter.setPen(line);
    const int x = width() - 1;
    painter.drawLine(x, 4, x, height() - 4);
}
