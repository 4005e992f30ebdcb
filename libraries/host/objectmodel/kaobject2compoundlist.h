#pragma once

#include "kaobject2.h"

// A named list of compounds of a project database; its children are the
// compounds.
class KAHOST_EXPORT KAObject2CompoundList : public KAObject2
{
public:
    explicit KAObject2CompoundList(const QString& name)
        : KAObject2(KAObjectTypeCompoundList, name) {}
    KAObject2* clone() const override { return new KAObject2CompoundList(*this); }
};
