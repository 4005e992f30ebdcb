#pragma once

#include "kaobject2.h"

#include <QList>

class KAObject2PeakDetect;

// A compound of a project database: a substance followed through the peak
// detections that measured it, in its own project or in another one.
class KAHOST_EXPORT TCompoundAbstract : public KAObject2
{
public:
    explicit TCompoundAbstract(const QString& name)
        : KAObject2(KAObjectTypeCompound, name) {}

    // The compound's peak detections in their order. An entry is null when
    // the detection is gone or its project is not open.
    virtual QList<const KAObject2PeakDetect*> getPeakDetectList() const = 0;
};
