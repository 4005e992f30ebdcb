#pragma once

#include "kaobject2.h"

class KAObject2Analysis;

// The MS deconvolution entry of a multichannel analysis; made by the browser.
class KAHOST_EXPORT KAObject2DeconvMS : public KAObject2
{
public:
    explicit KAObject2DeconvMS(const KAObject2Analysis* analysis);
    const KAObject2Analysis* analysis() const { return m_analysis; }
    KAObject2* clone() const override { return new KAObject2DeconvMS(*this); }

private:
    const KAObject2Analysis* m_analysis; // not owned
};
