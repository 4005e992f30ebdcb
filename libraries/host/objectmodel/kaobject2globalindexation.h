#pragma once

#include "kaobject2.h"

class KAHOST_EXPORT KAObject2GlobalIndexation : public KAObject2
{
public:
    explicit KAObject2GlobalIndexation(const QString& name)
        : KAObject2(KAObjectTypeGlobalIndexation, name) {}
    KAObject2* clone() const override { return new KAObject2GlobalIndexation(*this); }
};
