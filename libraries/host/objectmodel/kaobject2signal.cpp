#include "kaobject2signal.h"
#include "kaobject2analysis.h"

const KAObject2Analysis* KAObject2Signal::analysis() const
{
    const KAObject2* parent = parentObject();
    return parent && parent->type() == KAObjectTypeAnalysis ? static_cast<const KAObject2Analysis*>(parent) : nullptr;
}
