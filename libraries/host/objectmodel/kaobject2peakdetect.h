#pragma once

#include "kaobject2.h"

class KAObject2Signal;

// A peak detection. Bit 0x200 of the source marks a manual identification.
class KAHOST_EXPORT KAObject2PeakDetect : public KAObject2
{
public:
    KAObject2PeakDetect(const QString& name, quint16 source)
        : KAObject2(KAObjectTypePeakDetect, name), m_source(source) {}
    const KAObject2Signal* signal() const;
    quint16 getSource() const { return m_source; }
    KAObject2* clone() const override { return new KAObject2PeakDetect(*this); }

private:
    quint16 m_source;
};
