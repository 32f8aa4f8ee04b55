#pragma once
// A query engine over a small in-memory catalogue (customers, orders, items with foreign keys, a
// view and a system table) and a diagram shown on it, for the diagram's tests.

#include "core/querybuilder/QueryEngine.h"
#include "gui/components/QueryDiagram.h"
#include "gui/components/QueryDiagramView.h"
#include "gui/components/QueryObjectBox.h"

#include <memory>

inline MetadataCatalog shopCatalog()
{
    const auto object = [](MetadataObject::Kind kind, const QString &name, const QStringList &columns) {
        MetadataObject o;
        o.kind = kind;
        o.schema = QStringLiteral("main");
        o.name = name;
        for (const QString &c : columns)
            o.columns.append(MetadataColumn{c, QStringLiteral("INTEGER"), c == QLatin1String("id")});
        return o;
    };
    MetadataCatalog c;
    c.objects << object(MetadataObject::Table, QStringLiteral("customers"), {"id", "name", "region"})
              << object(MetadataObject::Table, QStringLiteral("orders"), {"id", "customer_id", "total"})
              << object(MetadataObject::Table, QStringLiteral("items"), {"id", "order_id", "product", "qty"})
              << object(MetadataObject::View, QStringLiteral("big_orders"), {"id", "total"})
              << object(MetadataObject::SystemTable, QStringLiteral("sys_info"), {"key", "value"});
    c.foreignKeys << MetadataForeignKey{QStringLiteral("orders"), {"customer_id"}, QStringLiteral("customers"), {"id"}}
                  << MetadataForeignKey{QStringLiteral("items"), {"order_id"}, QStringLiteral("orders"), {"id"}};
    return c;
}

struct DiagramFixture
{
    QueryEngine engine;
    std::unique_ptr<QueryDiagram> diagram;

    DiagramFixture()
    {
        engine.setMetadata(shopCatalog());
        diagram = std::make_unique<QueryDiagram>(&engine);
        diagram->reloadMetadata();
        diagram->resize(1100, 700);
    }
    // The generated text on one line.
    QString sql() const { return engine.sql().simplified(); }
    QueryDiagramView *view() const { return diagram->findChild<QueryDiagramView *>(); }
    QStringList boxNames() const
    {
        QStringList names;
        for (const QueryObjectBox *b : view()->boxes())
            names << b->referenceName();
        return names;
    }
};
