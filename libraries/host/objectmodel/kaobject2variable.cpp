#include "kaobject2variable.h"
#include "kaobject2dataset.h"

const KAObject2Dataset* KAObject2Variable::dataset() const
{
    const KAObject2* parent = parentObject();
    return parent && parent->type() == KAObjectTypeDataset ? static_cast<const KAObject2Dataset*>(parent) : nullptr;
}
