#include "karibbonbar.h"

#include "karibbongroup.h"

#include <QHBoxLayout>
#include <QLinearGradient>
#include <QPainter>

KARibbonBar::KARibbonBar(QWidget* parent)
    : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    row->setSpacing(0);
    m_groups = new QHBoxLayout;
    m_groups->setContentsMargins(0, 0, 0, 0);
    m_groups->setSpacing(2);
    row->addLayout(m_groups);
    row->addStretch(1);
    m_trailing = new QHBoxLayout;
    m_trailing->setContentsMargins(0, 0, 0, 0);
    m_trailing->setSpacing(2);
    row->addLayout(m_trailing);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void KARibbonBar::addGroup(KARibbonGroup* group)
{
    if (group)
        m_groups->addWidget(group);
}

QBoxLayout* KARibbonBar::groupLayout() const
{
    return m_groups;
}

QList<KARibbonGroup*> KARibbonBar::groups() const
{
    QList<KARibbonGroup*> result;
    for (int i = 0; i < m_groups->count(); ++i) {
        if (auto* group = qobject_cast<KARibbonGroup*>(m_groups->itemAt(i)->widget()))
            result.append(group);
    }
    return result;
}

void KARibbonBar::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const QColor window = palette().color(QPalette::Window);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0.0, window.lighter(108));
    gradient.setColorAt(1.0, window.darker(104));
    painter.fillRect(rect(), gradient);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(0, height() - 1, width(), height() - 1);
}
