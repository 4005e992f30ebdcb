#pragma once

#include "kahost_export.h"

#include <QString>

class KAObject2;
class QStatusBar;

// What the module needs of the host's main window. The host registers its
// window with setInstance(); returnMe() is null when there is none (tests,
// command-line runs).
class KAHOST_EXPORT MainWindowInterface
{
public:
    MainWindowInterface();
    virtual ~MainWindowInterface(); // unregisters itself when registered

    static MainWindowInterface* returnMe();
    // Not owned; null unregisters.
    static void setInstance(MainWindowInterface* window);

    virtual QStatusBar* statusBar() = 0;
    // Opens an object in the host (mode is the host's open mode). The
    // default opens nothing.
    virtual bool openObject(const KAObject2* object, int mode);
    // A status-bar message; nothing when there is no status bar.
    virtual void showMessage(const QString& message);

    MainWindowInterface(const MainWindowInterface&) = delete;
    MainWindowInterface& operator=(const MainWindowInterface&) = delete;
};
