#pragma once
// A fetched result built in memory for core tests: columns of the given names and type names,
// then the rows, each value appended as a fetch path would append it.
#include "core/workspace/ResultTable.h"

#include <QVariantList>
#include <initializer_list>
#include <memory>
#include <utility>

inline std::unique_ptr<ResultTable> filledTable(std::initializer_list<std::pair<const char *, const char *>> columns,
                                                std::initializer_list<QVariantList> rows)
{
    auto table = std::make_unique<ResultTable>();
    for (const auto &[name, type] : columns)
        table->addColumn(QString::fromLatin1(name), QString::fromLatin1(type));
    for (const QVariantList &row : rows)
        for (int col = 0; col < table->columnCount(); ++col)
            table->column(col).appendVariant(row.value(col));
    table->finishFetch(false);
    return table;
}
