#include "kaabstractbrowserctrl.h"

KAAbstractBrowserCtrl::KAAbstractBrowserCtrl(const QString& name)
    : m_name(name)
{
}

KAAbstractBrowserCtrl::~KAAbstractBrowserCtrl() = default;

bool KAAbstractBrowserCtrl::isInMultiProject() const
{
    return false;
}

bool KAAbstractBrowserCtrl::renameObject(TTree<KAObject2*>*, QString&)
{
    return false;
}
