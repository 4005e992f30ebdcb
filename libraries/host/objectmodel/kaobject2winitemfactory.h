#pragma once

#include "kahost_export.h"

class KAObject2WinFile;
class QFileInfo;
class QString;

// Makes the object of a file-system entry: a folder for a directory, a file
// otherwise. The caller owns it.
class KAHOST_EXPORT KAObject2WinItemFactory
{
public:
    static KAObject2WinFile* createItem(const QFileInfo& info);
    // The same when the caller already knows the kind and the name shown,
    // as a listing does: the disk is not asked.
    static KAObject2WinFile* createItem(const QFileInfo& info, bool isDir, const QString& name);
};
