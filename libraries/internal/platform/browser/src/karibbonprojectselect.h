#pragma once

#include "kabrowser_export.h"
#include "karibbonmodulebar.h"

class KAProjectSelectCtrl;
class KAProjectSelectEditor;
class KARibbonGroupExpandable;
class QAbstractButton;
class QAction;

// The ribbon of the project selection module: Open, Read only open, Edit
// properties and Project delete, and the Show properties toggle.
class KABROWSER_EXPORT KARibbonProjectSelect : public KARibbonModuleBar
{
    Q_OBJECT
public:
    explicit KARibbonProjectSelect(KAProjectSelectCtrl* ctrl);

    void setEditor(KAProjectSelectEditor* editor);
    void exec();
    void closeRequested() override;
    int getIdForHelp() const override;

    QAction* openAction() const { return m_open; }
    QAction* readOnlyOpenAction() const { return m_readOnlyOpen; }
    QAction* editPropertiesAction() const { return m_editProperties; }
    QAction* deleteAction() const { return m_delete; }
    KARibbonGroupExpandable* expandableGroup() const { return m_expandable; }
    QAbstractButton* showPropertiesButton() const { return m_showProperties; }

public slots:
    void slotActionTiggered();
    void slotEventOccured(QEvent::Type type) override;

private:
    void createToolsGroup();
    void createDisplayGroup();

    KAProjectSelectCtrl* m_ctrl;                   // not owned
    QAction* m_open = nullptr;                     // owned (children)
    QAction* m_readOnlyOpen = nullptr;
    QAction* m_editProperties = nullptr;
    QAction* m_delete = nullptr;
    KARibbonGroupExpandable* m_expandable = nullptr; // owned (child)
    QAbstractButton* m_showProperties = nullptr;   // owned (child)
};
