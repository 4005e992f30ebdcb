#pragma once

#include "kabrowser_export.h"
#include "kaprojectbrowserplugin.h"
#include "katreewidgetitemcreatorabstract.h"

#include <QHash>
#include <QMap>

class KAProjectBrowserCtrl;
class QAction;

// Performs every text search of the project explorer and keeps the user's
// saved searches. Its branch is either the "Saved searches" list (after
// init) or the "Results" of the last search.
class KABROWSER_EXPORT KAProjectBrowserPluginSearch : public KAProjectBrowserPlugin,
                                                      public KATreeWidgetItemCreatorAbstract
{
    Q_OBJECT
public:
    explicit KAProjectBrowserPluginSearch(KAProjectBrowserCtrl* ctrl);
    ~KAProjectBrowserPluginSearch() override;

    void init() override;
    void search(const QString& text, KAObjectType type);
    bool refreshRequested(KAObjectType type, const KAObject2* object) override;
    bool fillNodeOnExpand(Node* node) override;
    bool renameObject(Node* node, QString& name) override;
    bool deleteObject(Node* node, bool flag) override;

    KATreeWidgetItemCreatorAbstract* itemCreator() override { return this; }
    KATreeWidgetItem* createItem(const KAObject2* object, QTreeWidgetItem* parentItem, QTreeWidget* view) override;
    QVector<KAObjectType> itemKinds() const override { return {KAObjectTypeSearch, KAObjectTypeSearchFolder}; }

    const QMap<QString, QString>& savedSearches() const { return m_savedSearches; }
    const QString& searchText() const { return m_searchText; }
    KAObjectType searchKind() const { return m_searchKind; }
    QAction* saveAction();
    // Hands the current branch over to the caller (the plug-in forgets it).
    Node* takeTree();
    QString savedSearchesPath() const;

public slots:
    void slotSave();

private:
    void destroyBranch();
    void readFile();
    void writeFile();
    // Walks a tree into a category node; true when anything matched.
    bool searchTree(Node* tree, Node* category, const QString& folded);
    Node* resultParent(const KAObject2* object, Node* category, QHash<const KAObject2*, Node*>& shown);

    KAProjectBrowserCtrl* m_ctrl;           // not owned
    QMap<QString, QString> m_savedSearches; // saved search name to text
    QString m_searchText;
    KAObjectType m_searchKind = KAObjectTypeProject;
    QAction* m_saveAction = nullptr;        // owned (QObject child)
};
