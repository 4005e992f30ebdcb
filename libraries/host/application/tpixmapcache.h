#pragma once

#include "kahost_export.h"

#include <QPixmap>

class QIcon;

// Icons by name. The module ships its own images in a resource; a desktop
// theme providing an icon of the same name takes precedence.
class KAHOST_EXPORT TPixmapCache
{
public:
    static const QPixmap& find(const char* name);
    static QIcon icon(const char* name);
};
