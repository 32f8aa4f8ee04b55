#include "gui/components/QueryMetadataTree.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>

namespace {

enum Level { Database, Schema, Type };

// The grouping levels of each "GroupingType", in the order of the options dialog's list.
QVector<Level> levelsOf(int groupingType)
{
    switch (groupingType) {
    case 1: return {Database};
    case 2: return {Schema};
    case 3: return {Database, Schema};
    case 4: return {Type};
    case 5: return {Database, Type};
    case 6: return {Schema, Type};
    case 7: return {Database, Schema, Type};
    case 8: return {Type, Database, Schema};
    default: return {};
    }
}

QString typeCaption(MetadataObject::Kind kind)
{
    switch (kind) {
    case MetadataObject::View: return QStringLiteral("Views");
    case MetadataObject::SystemTable: return QStringLiteral("System Tables");
    default: return QStringLiteral("Tables");
    }
}

bool shown(MetadataObject::Kind kind, const QueryDiagramOptions &options)
{
    switch (kind) {
    case MetadataObject::View: return options.showUserViews;
    case MetadataObject::SystemTable: return options.showSystemTables;
    default: return options.showUserTables;
    }
}

const int NameRole = Qt::UserRole + 1;

} // namespace

QString QueryMetadataTree::mimeType() { return QStringLiteral("application/x-vantry-query-object"); }

QueryMetadataTree::QueryMetadataTree(QWidget *parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("MetadataTreePane"));
    setHeaderHidden(true);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item) {
        if (!objectName(item).isEmpty())
            emit addRequested(objectName(item));
    });
}

void QueryMetadataTree::reload(const MetadataCatalog &catalog, const QueryDiagramOptions &options)
{
    clear();
    const QVector<Level> levels = levelsOf(options.groupingType);
    // A name is qualified with its schema only where another schema has the same name.
    QHash<QString, int> nameCount;
    for (const MetadataObject &o : catalog.objects)
        ++nameCount[o.name.toLower()];
    for (const MetadataObject &o : catalog.objects) {
        if (!shown(o.kind, options))
            continue;
        QTreeWidgetItem *parent = invisibleRootItem();
        for (Level level : levels) {
            // The catalogue knows no database names: that level is left out.
            const QString caption = level == Type ? typeCaption(o.kind) : level == Schema ? o.schema : QString();
            if (caption.isEmpty())
                continue;
            QTreeWidgetItem *group = nullptr;
            for (int i = 0; i < parent->childCount() && !group; ++i)
                if (parent->child(i)->data(0, NameRole).isNull() && parent->child(i)->text(0) == caption)
                    group = parent->child(i);
            if (!group) {
                group = new QTreeWidgetItem(parent, {caption});
                group->setFlags(Qt::ItemIsEnabled);
                group->setExpanded(true);
            }
            parent = group;
        }
        const QString name = nameCount.value(o.name.toLower()) > 1 && !o.schema.isEmpty() ? o.schema + QLatin1Char('.') + o.name : o.name;
        auto *item = new QTreeWidgetItem(parent, {levels.contains(Schema) ? o.name : name});
        item->setData(0, NameRole, name);
        item->setToolTip(0, (o.kind == MetadataObject::View ? QStringLiteral("View ") : QStringLiteral("Table ")) + name);
        item->setIcon(0, style()->standardIcon(o.kind == MetadataObject::View ? QStyle::SP_FileDialogContentsView : QStyle::SP_FileIcon));
    }
    expandAll();
    if (topLevelItemCount() > 0 && !currentItem())
        setCurrentItem(topLevelItem(0));
}

QString QueryMetadataTree::objectName(const QTreeWidgetItem *item)
{
    return item ? item->data(0, NameRole).toString() : QString();
}

QStringList QueryMetadataTree::mimeTypes() const { return {mimeType()}; }

QMimeData *QueryMetadataTree::mimeData(const QList<QTreeWidgetItem *> &items) const
{
    QStringList names;
    for (const QTreeWidgetItem *item : items)
        if (!objectName(item).isEmpty())
            names << objectName(item);
    if (names.isEmpty())
        return nullptr;
    auto *mime = new QMimeData;
    mime->setData(mimeType(), names.join(QLatin1Char('\n')).toUtf8());
    return mime;
}

void QueryMetadataTree::keyPressEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !objectName(currentItem()).isEmpty()) {
        for (QTreeWidgetItem *item : selectedItems().isEmpty() ? QList<QTreeWidgetItem *>{currentItem()} : selectedItems())
            if (!objectName(item).isEmpty())
                emit addRequested(objectName(item));
        return;
    }
    QTreeWidget::keyPressEvent(event);
}
