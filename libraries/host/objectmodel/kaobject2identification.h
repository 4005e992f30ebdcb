#pragma once

#include "kaobject2.h"

class KAObject2IdentificationGroup;
class KAObject2PeakDetect;

class KAHOST_EXPORT KAObject2Identification : public KAObject2
{
public:
    explicit KAObject2Identification(const QString& name)
        : KAObject2(KAObjectTypeIdentification, name) {}
    void setParentGroup(const KAObject2IdentificationGroup* group) { m_group = group; }
    const KAObject2IdentificationGroup* parentGroup() const { return m_group; }
    // The peak detections this identification works on.
    const QList<const KAObject2PeakDetect*>& workPDList() const { return m_workPD; }
    void addWorkPD(const KAObject2PeakDetect* peakDetect) { m_workPD.append(peakDetect); }
    // Used by the database when a peak detection is deleted, so that no
    // identification keeps a dangling pointer.
    void removeWorkPD(const KAObject2PeakDetect* peakDetect) { m_workPD.removeAll(peakDetect); }
    KAObject2* clone() const override { return new KAObject2Identification(*this); }

private:
    const KAObject2IdentificationGroup* m_group = nullptr; // not owned
    QList<const KAObject2PeakDetect*> m_workPD;             // not owned
};
