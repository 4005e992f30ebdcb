#include "kaprojectbrowserplugin.h"

#include "kaobject2.h"
#include "ttree.h"

#include <QAction>

KAProjectBrowserPlugin::KAProjectBrowserPlugin(KAAbstractBrowserCtrl* ctrl, const QString& name)
    : QObject(nullptr)
    , KAProjectBrowserAbstract(ctrl)
    , m_name(name)
{
}

KAProjectBrowserPlugin::~KAProjectBrowserPlugin()
{
    delete m_tree;
}

void KAProjectBrowserPlugin::refreshCurrentView()
{
}

void KAProjectBrowserPlugin::setTree(Node* tree)
{
    if (tree == m_tree)
        return;
    delete m_tree;
    m_tree = tree;
}

QList<QAction*> KAProjectBrowserPlugin::contextActions(Node*)
{
    return {};
}
