#pragma once

#include "kabrowser_export.h"
#include "kaobjecttype.h"

#include <QActionGroup>

class KAProjectBrowserFilterPackage;
class QMenu;

// The checkable view actions of a filter package's user-selectable entries
// (label, icon, kind as data), all checked at first, in the package's order.
class KABROWSER_EXPORT KAFilterActionGroup : public QActionGroup
{
    Q_OBJECT
public:
    KAFilterActionGroup(const KAProjectBrowserFilterPackage* filter, QMenu* menu, QObject* parent);

    // The kinds of every action, or of the checked ones, in group order.
    QList<KAObjectType> types(bool checkedOnly) const;
    // Enables the actions of these kinds, disables the others.
    void setAllowed(const QList<KAObjectType>& types);
    // Checks the actions of these kinds, unchecks the others.
    void setCurrent(const QList<KAObjectType>& types);
    QAction* action(KAObjectType type) const;
};
