#include "tcompound.h"

#include "tdatabase.h"

QList<const KAObject2PeakDetect*> TCompound::getPeakDetectList() const
{
    return db() ? db()->compoundPeakDetectList(this) : QList<const KAObject2PeakDetect*>();
}
