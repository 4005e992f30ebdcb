#pragma once

#include "kahost_export.h"

#include <QString>

// A keyed property of a database object. The third and fourth fields
// (unit, comment) are kept as given.
class KAHOST_EXPORT TProperty
{
public:
    TProperty() = default;
    TProperty(const QString& key, const QString& value,
              const QString& unit = QString(), const QString& comment = QString())
        : m_key(key), m_value(value), m_unit(unit), m_comment(comment) {}

    const QString& key() const { return m_key; }
    const QString& value() const { return m_value; }
    const QString& unit() const { return m_unit; }
    const QString& comment() const { return m_comment; }
    bool isNull() const { return m_key.isNull(); }

private:
    QString m_key;
    QString m_value;
    QString m_unit;
    QString m_comment;
};
