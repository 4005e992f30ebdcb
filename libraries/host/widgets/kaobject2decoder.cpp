#include "kaobject2decoder.h"

#include "kamimedata.h"

QString KAObject2Decoder::objectFormat()
{
    return QStringLiteral("kavelo/data");
}

QList<const KAObject2*> KAObject2Decoder::decodeObject(const QMimeData* data)
{
    if (!data || !data->hasFormat(objectFormat()))
        return {};
    const auto* objects = dynamic_cast<const KAMimeData<QList<const KAObject2*>>*>(data);
    if (!objects)
        return {};
    return objects->value();
}
