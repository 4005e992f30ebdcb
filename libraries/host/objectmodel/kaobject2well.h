#pragma once

#include "kaobject2.h"

// Top level of the numerical arrays; its children are datasets.
class KAHOST_EXPORT KAObject2Well : public KAObject2
{
public:
    explicit KAObject2Well(const QString& name)
        : KAObject2(KAObjectTypeWell, name) {}
    KAObject2* clone() const override { return new KAObject2Well(*this); }
};
