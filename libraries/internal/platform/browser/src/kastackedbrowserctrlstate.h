#pragma once

#include "kabrowser_export.h"

#include <QCoreApplication>

class KAAbstractBrowserCtrl;
class KAFileSystemBrowserFilterPackage;
class KAStackedBrowserCtrl;
class KAStackedBrowserEditorInterface;

// One view of the stacked explorer: its browser controller and its own copy
// of the main filter package.
class KABROWSER_EXPORT KAStackedBrowserCtrlState
{
    Q_DECLARE_TR_FUNCTIONS(KAStackedBrowserCtrlState)
public:
    explicit KAStackedBrowserCtrlState(KAStackedBrowserCtrl* context);
    virtual ~KAStackedBrowserCtrlState();

    virtual KAAbstractBrowserCtrl* getCtrl() const = 0;
    virtual KAFileSystemBrowserFilterPackage* getFilter() const { return m_filter; }
    virtual void getTitle(QString& title) const = 0;
    virtual void search(const QString& text);
    virtual void enter();
    virtual void leave();

protected:
    KAStackedBrowserEditorInterface* editor() const;
    KAFileSystemBrowserFilterPackage* mainFilter() const;
    bool flag() const;

    KAStackedBrowserCtrl* m_context;              // not owned
    KAFileSystemBrowserFilterPackage* m_filter;   // owned
};
