#include "kaobject2deconvms.h"
#include "kaobject2analysis.h"

#include <QCoreApplication>

KAObject2DeconvMS::KAObject2DeconvMS(const KAObject2Analysis* analysis)
    : KAObject2(KAObjectTypeDeconvMS,
                QCoreApplication::translate("KAObject2DeconvMS", "MS deconvolution", "Déconvolution MS"))
    , m_analysis(analysis)
{
}
