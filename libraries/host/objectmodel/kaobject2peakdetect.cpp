#include "kaobject2peakdetect.h"
#include "kaobject2signal.h"

const KAObject2Signal* KAObject2PeakDetect::signal() const
{
    const KAObject2* parent = parentObject();
    return parent && parent->type() == KAObjectTypeSignal ? static_cast<const KAObject2Signal*>(parent) : nullptr;
}
