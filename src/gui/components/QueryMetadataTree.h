#pragma once
// The metadata tree pane of the query diagram: the catalogue's tables and views, filtered and
// grouped as the "MetadataTreePane" options say. An object is added to the diagram by dragging
// it there, by double-clicking it, or by Enter.

#include "core/querybuilder/MetadataProvider.h"
#include "gui/components/QueryDiagramOptions.h"

#include <QTreeWidget>

class QueryMetadataTree : public QTreeWidget
{
    Q_OBJECT
public:
    // The mime type the diagram accepts; its data is the object's name as addObject takes it.
    static QString mimeType();

    explicit QueryMetadataTree(QWidget *parent = nullptr);
    void reload(const MetadataCatalog &catalog, const QueryDiagramOptions &options);
    // The name of the object an item stands for; empty for group nodes.
    static QString objectName(const QTreeWidgetItem *item);

signals:
    void addRequested(const QString &objectName);

protected:
    QMimeData *mimeData(const QList<QTreeWidgetItem *> &items) const override;
    QStringList mimeTypes() const override;
    void keyPressEvent(QKeyEvent *event) override;
};
