#pragma once

#include "kaobject2.h"

// Placeholder payload standing for children not built yet. type() is always
// 2456; the kind it stands for is fakeKind().
class KAHOST_EXPORT KAObject2Fake : public KAObject2
{
public:
    explicit KAObject2Fake(KAObjectType kind)
        : KAObject2(kind), m_kind(kind) {}
    KAObjectType type() const override { return KAObjectTypeFake; }
    KAObjectType fakeKind() const { return m_kind; }
    KAObject2* clone() const override { return new KAObject2Fake(*this); }

private:
    KAObjectType m_kind;
};
