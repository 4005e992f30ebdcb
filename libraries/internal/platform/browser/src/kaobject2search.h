#pragma once

#include "kabrowser_export.h"
#include "kaobject2.h"

// A saved search: its name and the text it searches for.
class KABROWSER_EXPORT KAObject2Search : public KAObject2
{
public:
    KAObject2Search(const QString& name, const QString& text)
        : KAObject2(KAObjectTypeSearch, name), m_search(text) {}
    KAObject2Search(const KAObject2Search&) = default;
    KAObject2Search& operator=(const KAObject2Search&) = default;

    const QString& search() const { return m_search; }
    KAObject2* clone() const override { return new KAObject2Search(*this); }

private:
    QString m_search;
};
