#pragma once

#include "kabrowser_export.h"
#include "kafilesystembrowserobserver.h"
#include "kamodulectrl.h"
#include "kaobjecttype.h"

#include <QList>

class KAFileSystemBrowserCtrl;
class KAFileSystemBrowserFilterPackage;
class KAProjectBrowserFilterPackage;
class KAProjectSelectEditor;
class KARibbonProjectSelect;

// The module in which the user picks a project: open, open read-only, edit
// its properties or delete it. Shows the projects through a file-system
// explorer and is told by it when the user opens one.
class KABROWSER_EXPORT KAProjectSelectCtrl : public KAModuleCtrl, public KAFileSystemBrowserObserver
{
    Q_OBJECT
public:
    KAProjectSelectCtrl();
    ~KAProjectSelectCtrl() override;

    bool initView() override;
    void editorHasBeenClosed() override;
    bool fsObjectOpened(const KAObject2* object) override;

    KAProjectBrowserFilterPackage* getFilter() const;
    KAFileSystemBrowserFilterPackage* viewFilter() const { return m_viewFilter; }
    KAFileSystemBrowserCtrl* browser() const { return m_browser; }
    KAProjectSelectEditor* editor() const { return m_editor; }
    KARibbonProjectSelect* ribbon() const { return m_ribbon; }

    void filterView(const QList<KAObjectType>& types);
    void actionOpen(bool readOnly);
    void actionEditProperties();
    void actionDelete();
    void actionSearch(const QString& text);

private:
    KAFileSystemBrowserCtrl* m_browser;                // owned
    KAFileSystemBrowserFilterPackage* m_baseFilter;    // owned
    KAFileSystemBrowserFilterPackage* m_viewFilter;    // owned
    KARibbonProjectSelect* m_ribbon = nullptr;         // released with deleteLater
    KAProjectSelectEditor* m_editor = nullptr;         // not owned: a child of the ribbon
};
