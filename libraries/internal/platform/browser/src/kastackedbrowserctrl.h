#pragma once

#include "kabrowser_export.h"
#include "kaobjecttype.h"
#include "projectbrowserinterface.h"

#include <QCoreApplication>
#include <QList>
#include <QStringList>

class KAFileSystemBrowserCtrl;
class KAStackedBrowserCtrlState;
class KAStackedBrowserEditorFactoryInterface;
class KAStackedBrowserEditorInterface;

// One dockable explorer that shows the project explorer or the file-system
// explorer under one search field and one filter. Each state owns its
// browser controller and its own copy of the filter package.
class KABROWSER_EXPORT KAStackedBrowserCtrl : public ProjectBrowserInterface
{
    Q_DECLARE_TR_FUNCTIONS(KAStackedBrowserCtrl)
public:
    explicit KAStackedBrowserCtrl(const KAStackedBrowserEditorFactoryInterface& factory);
    ~KAStackedBrowserCtrl() override;

    void init(KAFileSystemBrowserFilterPackage* filter, bool flag, stateEnum state) override;
    QWidget* getEditor() const override;
    KAStackedBrowserEditorInterface* editor() const { return m_editor; }
    KAFileSystemBrowserFilterPackage* getFilter() const override { return m_filter; }
    bool flag() const { return m_flag; }
    KAFileSystemBrowserCtrl* getFileSystemCtrl() const;
    void filterView(const QList<KAObjectType>& types);
    void filterFiles(const QStringList& extensions) override;
    void filterFiles() override;
    void refreshAllViews() override;
    void refreshCurrentView(bool intuitive) override;
    void intuitiveDragStart(void* data, KAObjectType type);
    void intuitiveDragEnd(void* data) override;
    void changeState(stateEnum state) override;
    void restoreState() override;
    void registerFileSystemBrowserObserver(KAFileSystemBrowserObserver* observer) override;
    void unregisterFileSystemBrowserObserver(KAFileSystemBrowserObserver* observer) override;
    void restoreDefaultEditor() override;
    void search(const QString& text) override;
    KAFileSystemBrowserFilterPackage* getCurrentStateFilter() const override;
    void resetCurrentStateFilter(bool intuitive) override;

    KAStackedBrowserCtrlState* currentState() const { return m_state; }
    KAStackedBrowserCtrlState* state(stateEnum state) const;

private:
    void createState(stateEnum state);

    KAStackedBrowserEditorInterface* m_editor = nullptr;          // owned
    KAFileSystemBrowserFilterPackage* m_filter = nullptr;         // not owned
    bool m_flag = false;
    QStringList m_extensions;
    KAStackedBrowserEditorFactoryInterface* m_factory = nullptr;  // owned copy
    KAStackedBrowserCtrlState* m_state = nullptr;                 // not owned: one of m_stateList
    KAStackedBrowserCtrlState* m_stateList[2] = {};               // owned
    stateEnum m_initialState = stateProject;
};
