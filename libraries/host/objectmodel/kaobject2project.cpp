#include "kaobject2project.h"

KAObject2Project::KAObject2Project(const QString& name, const QString& folder)
    : KAObject2(KAObjectTypeProject, name)
    , m_folder(folder)
{
}
