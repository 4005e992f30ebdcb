#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserabstract.h"

#include <QObject>
#include <QString>

class KATreeWidgetItemCreatorAbstract;
class QAction;

// A plug-in adds a branch of its own to the project tree and takes part in
// the operations the project controller dispatches. It owns its branch.
class KABROWSER_EXPORT KAProjectBrowserPlugin : public QObject, public KAProjectBrowserAbstract
{
    Q_OBJECT
public:
    KAProjectBrowserPlugin(KAAbstractBrowserCtrl* ctrl, const QString& name);
    ~KAProjectBrowserPlugin() override;

    const QString& name() const { return m_name; }
    Node* getTree() const override { return m_tree; }
    void refreshCurrentView() override;

    // The facet through which the host's item registry makes the items of
    // the plug-in's own kinds.
    virtual KATreeWidgetItemCreatorAbstract* itemCreator() = 0;

    // Context-menu actions the plug-in offers on one of its nodes.
    virtual QList<QAction*> contextActions(Node* node);

protected:
    // Replaces the branch; the previous one is destroyed.
    void setTree(Node* tree);
    // Forgets the branch without destroying it (its new owner does).
    void releaseTree() { m_tree = nullptr; }

private:
    QString m_name;
    Node* m_tree = nullptr; // owned
};
