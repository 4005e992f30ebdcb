#pragma once

#include "kahost_export.h"

#include <QPixmap>

class QIcon;

// Icons by name. The module ships its own images in a resource; a desktop
// theme providing an icon of the same name takes precedence.
class KAHOST_EXPORT TPixmapCache
{
public:
    // A 16x16 (logical) pixmap drawn for the screen's pixel ratio, cached for
    // the life of the process; a null pixmap for an unknown name or without
    // a GUI application. Needs an application object of some kind.
    static const QPixmap& find(const char* name);
    static QIcon icon(const char* name);
};
