#pragma once

#include "kaobject2.h"

class KAHOST_EXPORT KAObject2Analysis : public KAObject2
{
public:
    explicit KAObject2Analysis(const QString& name, bool multichannel = false)
        : KAObject2(KAObjectTypeAnalysis, name), m_multichannel(multichannel) {}
    bool isMulticanal() const { return m_multichannel; }
    void setMulticanal(bool multichannel) { m_multichannel = multichannel; }
    KAObject2* clone() const override { return new KAObject2Analysis(*this); }

private:
    bool m_multichannel;
};
