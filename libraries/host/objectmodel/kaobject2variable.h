#pragma once

#include "kaobject2.h"

class KAObject2Dataset;

// Content of a dataset.
class KAHOST_EXPORT KAObject2Variable : public KAObject2
{
public:
    explicit KAObject2Variable(const QString& name)
        : KAObject2(KAObjectTypeVariable, name) {}
    const KAObject2Dataset* dataset() const;
    KAObject2* clone() const override { return new KAObject2Variable(*this); }
};
