#include "gui/components/QueryDiagram.h"

#include <QHBoxLayout>
#include <QTreeWidget>

QueryDiagram::QueryDiagram(QueryEngine *engine, QWidget *parent) : QWidget(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("QueryBuilder"));
    auto *layout = new QHBoxLayout(this);
    m_treePane = new QTreeWidget(this);
    m_treePane->setVisible(m_options.showTreePane);
    layout->addWidget(m_treePane);
    connect(m_engine, &QueryEngine::sqlUpdated, this, &QueryDiagram::rebuild);
}

QueryDiagram::~QueryDiagram() = default;

void QueryDiagram::applyOptions(const QueryDiagramOptions &options)
{
    m_options = options;
    setTreePaneVisible(options.showTreePane);
}

void QueryDiagram::setTreePaneVisible(bool visible)
{
    if (m_options.showTreePane == visible && m_treePane->isVisibleTo(this) == visible)
        return;
    m_options.showTreePane = visible;
    m_treePane->setVisible(visible);
    emit treePaneVisibilityChanged(visible);
}

bool QueryDiagram::isTreePaneVisible() const { return m_options.showTreePane; }

void QueryDiagram::reloadMetadata() {}

QString QueryDiagram::addObject(const QString &objectName) { return objectName; }

void QueryDiagram::removeObject(const QString &) {}

void QueryDiagram::setColumnSelected(const QString &, const QString &, bool) {}

void QueryDiagram::linkColumns(const QString &, const QString &, const QString &, const QString &) {}

void QueryDiagram::rebuild() {}
