#include "core/querybuilder/MetadataProvider.h"

const MetadataObject *MetadataCatalog::find(const QString &name, const QString &schema) const
{
    for (const MetadataObject &o : objects)
        if (o.name.compare(name, Qt::CaseInsensitive) == 0
            && (schema.isEmpty() || o.schema.compare(schema, Qt::CaseInsensitive) == 0))
            return &o;
    return nullptr;
}
