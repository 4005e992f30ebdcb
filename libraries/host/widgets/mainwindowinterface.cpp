#include "mainwindowinterface.h"

#include <QStatusBar>

namespace {
MainWindowInterface* g_instance = nullptr; // not owned
}

MainWindowInterface::MainWindowInterface() = default;

MainWindowInterface::~MainWindowInterface()
{
    if (g_instance == this)
        g_instance = nullptr;
}

MainWindowInterface* MainWindowInterface::returnMe()
{
    return g_instance;
}

void MainWindowInterface::setInstance(MainWindowInterface* window)
{
    g_instance = window;
}

bool MainWindowInterface::openObject(const KAObject2* object, int mode)
{
    Q_UNUSED(object);
    Q_UNUSED(mode);
    return false;
}

void MainWindowInterface::showMessage(const QString& message)
{
    if (QStatusBar* bar = statusBar())
        bar->showMessage(message);
}
