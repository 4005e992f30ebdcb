#pragma once

#include "kaobject2.h"

class KAObject2Identification;

// An automatic identification group. Bit 0x800 of the source marks a group
// shown among the indexations.
class KAHOST_EXPORT KAObject2IdentificationGroup : public KAObject2
{
public:
    KAObject2IdentificationGroup(const QString& name, quint16 source)
        : KAObject2(KAObjectTypeIdentificationGroup, name), m_source(source) {}
    quint16 getSource() const { return m_source; }
    // Its identifications, in database order.
    QList<const KAObject2Identification*> child() const;
    KAObject2* clone() const override { return new KAObject2IdentificationGroup(*this); }

private:
    quint16 m_source;
};
