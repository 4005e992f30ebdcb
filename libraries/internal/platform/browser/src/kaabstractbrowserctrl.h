#pragma once

#include "kabrowser_export.h"

#include <QString>

template <typename T> class TTree;
class KAObject2;
class KAObject2Project;
class KAProjectBrowserFilterPackage;
class QWidget;

// The controller of one browser. Views, plug-ins and the stacked browser
// talk to any controller through this interface. The name keys the
// browser's record in the expand-state file.
class KABROWSER_EXPORT KAAbstractBrowserCtrl
{
public:
    explicit KAAbstractBrowserCtrl(const QString& name);
    virtual ~KAAbstractBrowserCtrl();

    const QString& getName() const { return m_name; }

    virtual void init(KAProjectBrowserFilterPackage* filter, const KAObject2Project* project, bool read) = 0;
    virtual QWidget* getEditor() const = 0;
    virtual void clearMgrList() = 0;
    virtual void fillTree(TTree<KAObject2*>* tree) = 0;
    virtual void refreshNode(TTree<KAObject2*>* node) = 0;
    virtual void deleteNode(TTree<KAObject2*>* node) = 0;
    virtual void fillNodeOnExpand(TTree<KAObject2*>* node) = 0;
    virtual void clearEditor() = 0;
    virtual void restoreMainTree(TTree<KAObject2*>* tree) = 0;
    virtual void refreshCurrentView(bool intuitive) = 0;
    virtual bool belongsToMe(TTree<KAObject2*>* node) = 0;
    virtual TTree<KAObject2*>* getTree() const = 0;
    virtual TTree<KAObject2*>* search(const QString& text) = 0;
    virtual KAProjectBrowserFilterPackage* getFilter() const = 0;
    virtual bool isInMultiProject() const;

    // Rename entry point of the views: name is in-out.
    virtual bool renameObject(TTree<KAObject2*>* node, QString& name);

private:
    QString m_name;
};
