#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserplugin.h"
#include "katreewidgetitemcreatorabstract.h"

#include <QStringList>

class KAProjectBrowserCtrl;
class QAction;

// The "External folders" branch: folders of the disk the user links to a
// project, listed as they are expanded. Forgetting a folder only removes
// the link; nothing on disk is ever changed. The list is kept per project in
// "<project>/Settings/default.projectbrowser_externalfiles.xml".
class KABROWSER_EXPORT KAProjectBrowserPluginFiles : public KAProjectBrowserPlugin,
                                                     public KATreeWidgetItemCreatorAbstract
{
    Q_OBJECT
public:
    explicit KAProjectBrowserPluginFiles(KAProjectBrowserCtrl* ctrl);
    ~KAProjectBrowserPluginFiles() override;

    void init() override;
    bool refreshRequested(KAObjectType type, const KAObject2* object) override;
    bool fillNodeOnExpand(Node* node) override;
    bool deleteObject(Node* node, bool flag) override;

    KATreeWidgetItemCreatorAbstract* itemCreator() override { return this; }
    KATreeWidgetItem* createItem(const KAObject2* object, QTreeWidgetItem* parentItem, QTreeWidget* view) override;
    QVector<KAObjectType> itemKinds() const override { return {KAObjectTypeExternalFolders, KAObjectTypeExternalFile}; }
    QList<QAction*> contextActions(Node* node) override;

    // Links a folder to the project; false when already linked or missing.
    bool addFolder(const QString& path);
    const QStringList& folders() const { return m_folders; }
    QString listPath() const;
    // Opens a file of the branch with the system's application.
    bool openFile(Node* node) const;

public slots:
    void slotAddFolder();

private:
    void rebuild();
    bool readList();
    bool writeList();
    Node* addEntry(Node* parent, const QString& path);

    KAProjectBrowserCtrl* m_ctrl;       // not owned
    QStringList m_folders;
    QString m_listProject;              // the project folder the list was read for
    QAction* m_addAction = nullptr;     // owned (child), made on the GUI thread
};
