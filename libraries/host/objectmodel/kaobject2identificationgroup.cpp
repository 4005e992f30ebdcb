#include "kaobject2identificationgroup.h"
#include "kaobject2identification.h"

QList<const KAObject2Identification*> KAObject2IdentificationGroup::child() const
{
    QList<const KAObject2Identification*> result;
    for (const KAObject2* c : children()) {
        if (c->type() == KAObjectTypeIdentification)
            result.append(static_cast<const KAObject2Identification*>(c));
    }
    return result;
}
