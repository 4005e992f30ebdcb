#pragma once

#include "kaobjecttype.h"

#include <QPixmap>
#include <QString>

// One entry of a filter package: a kind, plug-in or capability switched on.
// Entries built with a label and an icon are user-selectable (active): menus
// offer a checkable action for them.
struct KAProjectBrowserFilter
{
    KAObjectType type = KAObjectTypeNone;
    QPixmap icon;
    QString label;
    bool active = false;
};
