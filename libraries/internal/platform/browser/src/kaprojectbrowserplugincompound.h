#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserplugin.h"
#include "katreewidgetitemcreatorabstract.h"

#include <QPointer>

class KAObject2;
class KAProjectBrowserCtrl;
namespace TechDB { class TDatabase; }

// The "Compound lists" branch: the compound lists of the project database,
// their compounds and, under each compound (when it is expanded), the peak
// detections it lists, which may belong to another open project. Renaming
// and deleting go to the database; deleting a detection under a compound
// only takes it out of the compound's list. The branch follows every change
// of compounds the database reports.
class KABROWSER_EXPORT KAProjectBrowserPluginCompound : public KAProjectBrowserPlugin,
                                                        public KATreeWidgetItemCreatorAbstract
{
    Q_OBJECT
public:
    explicit KAProjectBrowserPluginCompound(KAProjectBrowserCtrl* ctrl);
    ~KAProjectBrowserPluginCompound() override;

    void init() override;
    bool refreshRequested(KAObjectType type, const KAObject2* object) override;
    bool fillNodeOnExpand(Node* node) override;
    bool deleteObject(Node* node, bool flag) override;
    bool renameObject(Node* node, QString& name) override;

    KATreeWidgetItemCreatorAbstract* itemCreator() override { return this; }
    KATreeWidgetItem* createItem(const KAObject2* object, QTreeWidgetItem* parentItem, QTreeWidget* view) override;
    QVector<KAObjectType> itemKinds() const override { return {KAObjectTypeCompoundBranch}; }

    TechDB::TDatabase* database() const;

private slots:
    void slotCompoundsChanged();
    void slotAboutToDeleteObjects(QList<const KAObject2*>* objects);
    void slotRebuild();

private:
    void bindDatabase();
    // Rebuilds the branch's content under the same root, and the view's.
    void rebuild();
    void addCompound(Node* list, const KAObject2* compound);
    bool ownsNode(const Node* node) const;
    void watchDatabaseOf(const KAObject2* object);

    KAProjectBrowserCtrl* m_ctrl;          // not owned
    QPointer<TechDB::TDatabase> m_db;      // not owned: the first project's database
    Node* m_deleting = nullptr;            // not owned: the node this plug-in is deleting
    bool m_rebuildQueued = false;
};
