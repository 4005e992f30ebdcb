#pragma once

#include "kabrowser_export.h"

class KAFileSystemBrowserFilterPackage;
class KAFileSystemBrowserObserver;
class QString;
class QStringList;
class QWidget;

// The dockable explorer as the host sees it: it shows the project explorer
// or the file-system explorer, one at a time.
class KABROWSER_EXPORT ProjectBrowserInterface
{
public:
    enum stateEnum { stateProject = 0, stateFileSystem = 1 };

    virtual ~ProjectBrowserInterface();
    virtual void init(KAFileSystemBrowserFilterPackage* filter, bool flag, stateEnum state) = 0;
    virtual QWidget* getEditor() const = 0;
    virtual KAFileSystemBrowserFilterPackage* getFilter() const = 0;
    virtual void filterFiles() = 0;
    virtual void filterFiles(const QStringList& extensions) = 0;
    virtual void refreshAllViews() = 0;
    virtual void refreshCurrentView(bool intuitive) = 0;
    virtual void intuitiveDragEnd(void* data) = 0;
    virtual void changeState(stateEnum state) = 0;
    virtual void restoreState() = 0;
    virtual void registerFileSystemBrowserObserver(KAFileSystemBrowserObserver* observer) = 0;
    virtual void unregisterFileSystemBrowserObserver(KAFileSystemBrowserObserver* observer) = 0;
    virtual void restoreDefaultEditor() = 0;
    virtual void search(const QString& text) = 0;
    virtual KAFileSystemBrowserFilterPackage* getCurrentStateFilter() const = 0;
    virtual void resetCurrentStateFilter(bool intuitive) = 0;
};
