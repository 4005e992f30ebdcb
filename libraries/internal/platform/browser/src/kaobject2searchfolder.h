#pragma once

#include "kabrowser_export.h"
#include "kaobject2folder.h"

// The "Saved searches" folder, or the "Results" folder of the last search.
class KABROWSER_EXPORT KAObject2SearchFolder : public KAObject2Folder
{
public:
    KAObject2SearchFolder(const QString& name, bool isResults)
        : KAObject2Folder(name, KAObjectTypeSearchFolder, KAObjectTypeSearchFolder), m_isResults(isResults) {}
    bool isResults() const { return m_isResults; }
    KAObject2* clone() const override { return new KAObject2SearchFolder(*this); }

private:
    bool m_isResults;
};
