#include "ribboninterface.h"

#include "tassert.h"

#include <QStackedLayout>
#include <QWidget>

namespace {
const char* const SourceFile = "libraries\\host\\shell\\ribboninterface";
}

RibbonInterface* RibbonInterface::returnMe()
{
    static RibbonInterface instance;
    return &instance;
}

QStackedLayout* RibbonInterface::stack() const
{
    if (!m_host)
        return nullptr;
    // A QStackedWidget's own layout is a QStackedLayout.
    if (!m_host->layout()) {
        auto* layout = new QStackedLayout(m_host);
        layout->setContentsMargins(0, 0, 0, 0);
    }
    auto* layout = qobject_cast<QStackedLayout*>(m_host->layout());
    if (!layout)
        t_assert("qobject_cast<QStackedLayout*>(m_host->layout())", SourceFile, __LINE__, false);
    return layout;
}

void RibbonInterface::prune()
{
    m_ribbons.removeAll(QPointer<QWidget>());
}

void RibbonInterface::setHost(QWidget* ribbonArea)
{
    if (ribbonArea == m_host)
        return;
    prune();
    if (QStackedLayout* old = stack()) {
        for (const QPointer<QWidget>& ribbon : qAsConst(m_ribbons)) {
            old->removeWidget(ribbon);
            ribbon->hide();
            ribbon->setParent(nullptr);
        }
    }
    m_host = ribbonArea;
    for (const QPointer<QWidget>& ribbon : qAsConst(m_ribbons))
        place(ribbon);
    if (QStackedLayout* layout = stack()) {
        if (m_current)
            layout->setCurrentWidget(m_current);
    }
}

void RibbonInterface::place(QWidget* ribbon)
{
    if (QStackedLayout* layout = stack()) {
        if (layout->indexOf(ribbon) < 0)
            layout->addWidget(ribbon);
    }
}

void RibbonInterface::addRibbon(QWidget* ribbon, bool show, bool makeCurrent)
{
    if (!ribbon) {
        t_assert("ribbon != NULL", SourceFile, __LINE__, false);
        return;
    }
    prune();
    if (!contains(ribbon))
        m_ribbons.append(ribbon);
    place(ribbon);
    if (makeCurrent || !m_current)
        setCurrentRibbon(ribbon);
    if (show && m_host && m_host->isHidden())
        m_host->show();
}

void RibbonInterface::removeRibbon(QWidget* ribbon)
{
    if (!ribbon || !contains(ribbon))
        return;
    const bool wasCurrent = m_current == ribbon;
    m_ribbons.removeAll(ribbon);
    prune();
    if (QStackedLayout* layout = stack())
        layout->removeWidget(ribbon);
    ribbon->hide();
    ribbon->setParent(nullptr);
    if (wasCurrent) {
        m_current = nullptr;
        setCurrentRibbon(m_ribbons.isEmpty() ? nullptr : m_ribbons.last().data());
    }
}

bool RibbonInterface::contains(QWidget* ribbon) const
{
    for (const QPointer<QWidget>& known : m_ribbons) {
        if (known && known == ribbon)
            return true;
    }
    return false;
}

QList<QWidget*> RibbonInterface::ribbons() const
{
    QList<QWidget*> result;
    for (const QPointer<QWidget>& known : m_ribbons) {
        if (known)
            result.append(known);
    }
    return result;
}

QWidget* RibbonInterface::currentRibbon() const
{
    return m_current;
}

void RibbonInterface::setCurrentRibbon(QWidget* ribbon)
{
    if (ribbon && !contains(ribbon)) {
        t_assert("contains(ribbon)", SourceFile, __LINE__, false);
        return;
    }
    if (ribbon) {
        if (QStackedLayout* layout = stack())
            layout->setCurrentWidget(ribbon);
    }
    if (m_current == ribbon)
        return;
    m_current = ribbon;
    emit currentRibbonChanged(ribbon);
}
