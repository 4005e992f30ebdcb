#include "tabstractmapper.h"

#include "kaobject2.h"

namespace TechDB {

QList<const KAObject2*> TAbstractMapper::getObjectChildLst(const KAObject2* object, const KAObjectType& type)
{
    QList<const KAObject2*> result;
    if (!object)
        return result;
    // Children are kept in database order by the database that loaded them.
    for (const KAObject2* child : object->children()) {
        if (child->type() == type)
            result.append(child);
    }
    return result;
}

} // namespace TechDB
