#pragma once

#include "kahost_export.h"

#include <QString>

#include <functional>

class QUrl;

// Starts programs outside the application.
class KAHOST_EXPORT TExternalProcess
{
public:
    using Opener = std::function<bool(const QUrl& url)>;

    // Opens the system file manager on a folder, or on the folder holding a
    // file. False for an empty or missing path, or when the system could
    // not open it.
    static bool startWindowsExplorer(const QString& path);

    // Opens a file with the application the system associates with it.
    // False for an empty or missing path, a folder, or when the system
    // could not open it.
    static bool openDocument(const QString& path);

    // Replaces the system call that opens the URL (an empty function brings
    // it back): tests record the request instead of launching a program.
    static void setOpener(Opener opener);
};
