#pragma once

#include "kahost_export.h"

#include <QString>

// Per-user application data: the folder of the per-user browser files
// (QStandardPaths::AppDataLocation) and the read-only state of the current
// project.
class KAHOST_EXPORT TApplicationData
{
public:
    static TApplicationData* getInstance();

    QString applicationDataPath() const;       // created on first use
    bool isCurrentProjectReadOnly() const;
    void setCurrentProjectReadOnly(bool readOnly);
    QString userName() const;                  // login of the user
    QString applicationName() const;           // "kabrowser"

private:
    TApplicationData() = default;
    bool m_readOnly = false;
};
