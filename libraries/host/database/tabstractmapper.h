#pragma once

#include "kahost_export.h"
#include "kaobjecttype.h"

#include <QList>

class KAObject2;

namespace TechDB {

class KAHOST_EXPORT TAbstractMapper
{
public:
    // The children of an object restricted to a kind, in database order.
    static QList<const KAObject2*> getObjectChildLst(const KAObject2* object, const KAObjectType& type);
};

} // namespace TechDB
