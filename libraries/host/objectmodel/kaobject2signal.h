#pragma once

#include "kaobject2.h"

class KAObject2Analysis;

class KAHOST_EXPORT KAObject2Signal : public KAObject2
{
public:
    explicit KAObject2Signal(const QString& name)
        : KAObject2(KAObjectTypeSignal, name) {}
    // The analysis the signal belongs to, or null.
    const KAObject2Analysis* analysis() const;
    KAObject2* clone() const override { return new KAObject2Signal(*this); }
};
