#include "gui/components/QueryTreePane.h"

#include "core/querybuilder/SqlGenerator.h"

#include <QKeyEvent>

namespace {
const int PartRole = Qt::UserRole + 1;
}

QueryTreePane::QueryTreePane(QWidget *parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("QueryTreePane"));
    setHeaderHidden(true);
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item) {
        if (item->data(0, PartRole).isValid())
            emit partActivated(item->data(0, PartRole).toInt());
    });
}

void QueryTreePane::showQuery(const Query &query, const DialectChoice &dialect, const QueryDiagramOptions &options)
{
    clear();
    addQuery(invisibleRootItem(), query, dialect, options, true);
}

void QueryTreePane::addQuery(QTreeWidgetItem *parent, const Query &query, const DialectChoice &dialect,
                             const QueryDiagramOptions &options, bool top)
{
    const SqlGenerator generator(dialect);
    auto *unions = new QTreeWidgetItem(parent, {options.unionsCaption});
    unions->setExpanded(top ? options.expandUnions : options.expandSubqueries);
    for (int p = 0; p < query.parts.size(); ++p) {
        const SelectPart &part = query.parts.at(p);
        auto *partItem = new QTreeWidgetItem(unions, {QStringLiteral("Union %1").arg(p + 1)});
        if (top)
            partItem->setData(0, PartRole, p);
        partItem->setExpanded(true);
        if (part.nested) {
            addQuery(partItem, *part.nested, dialect, options, false);
            continue;
        }
        if (options.treeShowFields) {
            auto *fields = new QTreeWidgetItem(partItem, {options.fieldsCaption});
            for (const SelectItem &item : part.items) {
                QString text = generator.expression(item.expression);
                if (!item.alias.isEmpty())
                    text += QStringLiteral(" AS ") + item.alias.name;
                new QTreeWidgetItem(fields, {text});
            }
            fields->setExpanded(options.expandFields);
        }
        if (options.treeShowObjects) {
            auto *objects = new QTreeWidgetItem(partItem, {options.objectsCaption});
            for (const SourceObject &o : part.objects) {
                QStringList name;
                for (const Identifier &n : o.name)
                    name << n.name;
                QString text = o.kind == SourceObject::Derived ? QStringLiteral("(subquery)") : name.join(QLatin1Char('.'));
                if (!o.alias.isEmpty())
                    text += QStringLiteral(" AS ") + o.alias.name;
                auto *objectItem = new QTreeWidgetItem(objects, {text});
                if (o.kind == SourceObject::Derived && o.derived)
                    addQuery(objectItem, *o.derived, dialect, options, false);
                objectItem->setExpanded(options.expandSubqueries);
            }
            objects->setExpanded(options.expandObjects);
        }
    }
}

void QueryTreePane::keyPressEvent(QKeyEvent *event)
{
    QTreeWidgetItem *item = currentItem();
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && item && item->data(0, PartRole).isValid()) {
        emit partActivated(item->data(0, PartRole).toInt());
        return;
    }
    QTreeWidget::keyPressEvent(event);
}
