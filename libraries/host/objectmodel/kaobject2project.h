#pragma once

#include "kaobject2.h"

// A project known to the project manager: a folder holding a project
// database. db() is null while the project is closed.
class KAHOST_EXPORT KAObject2Project : public KAObject2
{
public:
    enum State { StateInProgress = 0, StateValidated = 1, StateArchived = 2, StateLocked = 3,
                 StateTerminated = 4, StateTerminatedArchived = 7 };

    KAObject2Project(const QString& name, const QString& folder);
    const QString& folder() const { return m_folder; }
    void setFolder(const QString& folder) { m_folder = folder; }
    int projectState() const { return m_state; }
    void setProjectState(int state) { m_state = state; }
    bool isTerminated() const { return m_state == StateTerminated || m_state == StateTerminatedArchived; }
    const QString& description() const { return m_description; }
    void setDescription(const QString& description) { m_description = description; }
    KAObject2* clone() const override { return new KAObject2Project(*this); }

private:
    QString m_folder;
    QString m_description;
    int m_state = StateInProgress;
};
