#pragma once

#include "kahost_export.h"
#include "tcompoundabstract.h"

// A compound as a project database keeps it: its detections are references
// that the database resolves on each call, so that a detection deleted or a
// project closed never leaves a dangling pointer behind.
class KAHOST_EXPORT TCompound : public TCompoundAbstract
{
public:
    explicit TCompound(const QString& name)
        : TCompoundAbstract(name) {}
    QList<const KAObject2PeakDetect*> getPeakDetectList() const override;
    KAObject2* clone() const override { return new TCompound(*this); }
};
