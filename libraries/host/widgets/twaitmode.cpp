#include "twaitmode.h"

#include <QApplication>
#include <QThread>

TWaitMode::TWaitMode()
{
    auto* app = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!app || QThread::currentThread() != app->thread())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_active = true;
}

TWaitMode::~TWaitMode()
{
    if (m_active && qobject_cast<QApplication*>(QCoreApplication::instance()))
        QApplication::restoreOverrideCursor();
}
