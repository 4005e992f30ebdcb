#pragma once

#include "kaobject2.h"

class KAObject2Well;

class KAHOST_EXPORT KAObject2Dataset : public KAObject2
{
public:
    explicit KAObject2Dataset(const QString& name)
        : KAObject2(KAObjectTypeDataset, name) {}
    const KAObject2Well* well() const;
    KAObject2* clone() const override { return new KAObject2Dataset(*this); }
};
