#include "kaobject2dataset.h"
#include "kaobject2well.h"

const KAObject2Well* KAObject2Dataset::well() const
{
    const KAObject2* parent = parentObject();
    return parent && parent->type() == KAObjectTypeWell ? static_cast<const KAObject2Well*>(parent) : nullptr;
}
