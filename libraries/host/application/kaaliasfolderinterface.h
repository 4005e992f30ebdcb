#pragma once

#include "kahost_export.h"

#include <QString>

// One of the user's named shortcuts to a folder.
class KAHOST_EXPORT KAAliasFolderInterface
{
public:
    KAAliasFolderInterface(const QString& name, const QString& path)
        : m_name(name), m_path(path) {}
    const QString& name() const { return m_name; }
    const QString& path() const { return m_path; }

private:
    QString m_name;
    QString m_path;
};
