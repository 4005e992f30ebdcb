#pragma once

#include "kahost_export.h"

#include <QList>
#include <QString>

class KAObject2;
class QMimeData;

// Reads the objects out of the drag data of the browsers.
class KAHOST_EXPORT KAObject2Decoder
{
public:
    // "kavelo/data": the format of a KAMimeData<QList<const KAObject2*>>.
    static QString objectFormat();

    // The dragged objects (not owned), in drag order; empty when data is
    // null, lacks the format or was not made by KAMimeData.
    static QList<const KAObject2*> decodeObject(const QMimeData* data);
};
