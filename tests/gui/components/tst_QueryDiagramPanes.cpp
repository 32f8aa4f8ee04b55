// The panes around the diagram follow their options and edit the model; every diagram action can
// be done from the keyboard.
#include "QueryDiagramFixture.h"

#include "gui/components/QueryColumnsPane.h"
#include "gui/components/QueryLinkDialog.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QtTest>

namespace {

QStringList topLevel(const QTreeWidget *tree)
{
    QStringList names;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        names << tree->topLevelItem(i)->text(0);
    return names;
}

QStringList childTexts(const QTreeWidgetItem *item)
{
    QStringList names;
    for (int i = 0; i < item->childCount(); ++i)
        names << item->child(i)->text(0);
    return names;
}

} // namespace

class TestQueryDiagramPanes : public QObject
{
    Q_OBJECT
private slots:
    void metadataTreeGroupsAndFiltersAsTheOptionsSay();
    void queryTreePaneFollowsItsOptions();
    void columnsPaneEditsTheSelectItems();
    void everyActionWorksFromTheKeyboard();
    void drawsAThreeTableJoinWithAUnion();
};

void TestQueryDiagramPanes::metadataTreeGroupsAndFiltersAsTheOptionsSay()
{
    DiagramFixture f;
    auto *tree = f.diagram->findChild<QTreeWidget *>(QStringLiteral("MetadataTreePane"));
    QVERIFY(tree);
    QCOMPARE(topLevel(tree), (QStringList{"customers", "orders", "items", "big_orders", "sys_info"}));

    QueryDiagramOptions options;
    options.groupingType = 4; // by object type
    f.diagram->applyOptions(options);
    QCOMPARE(topLevel(tree), (QStringList{"Tables", "Views", "System Tables"}));
    QCOMPARE(childTexts(tree->topLevelItem(1)), QStringList{"big_orders"});

    options.groupingType = 6; // by schema, then object type
    options.showUserViews = false;
    options.showSystemTables = false;
    f.diagram->applyOptions(options);
    QCOMPARE(topLevel(tree), QStringList{"main"});
    QCOMPARE(childTexts(tree->topLevelItem(0)), QStringList{"Tables"});
    QCOMPARE(childTexts(tree->topLevelItem(0)->child(0)), (QStringList{"customers", "orders", "items"}));

    options.showMetadataTreePane = false;
    f.diagram->applyOptions(options);
    f.diagram->show();
    QVERIFY(!tree->isVisible());
}

void TestQueryDiagramPanes::queryTreePaneFollowsItsOptions()
{
    DiagramFixture f;
    auto *tree = f.diagram->findChild<QTreeWidget *>(QStringLiteral("QueryTreePane"));
    QVERIFY(tree);
    f.diagram->show();
    QVERIFY(!tree->isVisible()); // hidden by default
    QSignalSpy toggled(f.diagram.get(), &QueryDiagram::treePaneVisibilityChanged);
    f.diagram->setTreePaneVisible(true);
    f.diagram->setTreePaneVisible(true);
    QCOMPARE(toggled.size(), 1);
    QVERIFY(tree->isVisible() && f.diagram->isTreePaneVisible());

    f.engine.setSql(QStringLiteral("select c.name from customers c union select name from big_orders"));
    QCOMPARE(topLevel(tree), QStringList{"Unions"});
    const QTreeWidgetItem *unions = tree->topLevelItem(0);
    QCOMPARE(childTexts(unions), (QStringList{"Union 1", "Union 2"}));
    QCOMPARE(childTexts(unions->child(0)), (QStringList{"Expressions", "Objects"}));
    QCOMPARE(childTexts(unions->child(0)->child(0)), QStringList{"c.name"});
    QCOMPARE(childTexts(unions->child(0)->child(1)), QStringList{"customers AS c"});

    // Captions, what is shown and what is expanded come from the options; applying them can hide
    // the pane again, which the window's toggle hears about.
    QueryDiagramOptions options = f.diagram->options();
    options.unionsCaption = QStringLiteral("Parts");
    options.objectsCaption = QStringLiteral("Sources");
    options.treeShowFields = false;
    options.expandObjects = false;
    f.diagram->applyOptions(options);
    QCOMPARE(topLevel(tree), QStringList{"Parts"});
    QCOMPARE(childTexts(tree->topLevelItem(0)->child(0)), QStringList{"Sources"});
    QVERIFY(!tree->topLevelItem(0)->child(0)->child(0)->isExpanded());
    options.showTreePane = false;
    f.diagram->applyOptions(options);
    QCOMPARE(toggled.size(), 2);
    QVERIFY(!tree->isVisible());
}

void TestQueryDiagramPanes::columnsPaneEditsTheSelectItems()
{
    DiagramFixture f;
    f.engine.setSql(QStringLiteral("select c.name, o.total from customers c inner join orders o on o.customer_id = c.id"));
    auto *pane = f.diagram->findChild<QueryColumnsPane *>();
    QVERIFY(pane);
    QCOMPARE(pane->rowCount(), 2);
    QCOMPARE(pane->item(1, QueryColumnsPane::ExpressionCol)->text(), QStringLiteral("o.total"));
    const auto choose = [&](int row, int column, const QString &text) {
        auto *combo = qobject_cast<QComboBox *>(pane->cellWidget(row, column));
        QVERIFY(combo);
        combo->setCurrentIndex(combo->findText(text));
        emit combo->textActivated(text);
    };

    pane->item(0, QueryColumnsPane::AliasCol)->setText(QStringLiteral("customer"));
    QVERIFY2(f.sql().startsWith(QStringLiteral("SELECT c.name AS customer, o.total FROM")), qPrintable(f.sql()));
    pane->item(0, QueryColumnsPane::GroupingCol)->setCheckState(Qt::Checked);
    choose(1, QueryColumnsPane::AggregateCol, QStringLiteral("SUM"));
    pane->item(1, QueryColumnsPane::CriteriaCol)->setText(QStringLiteral("> 100"));
    choose(1, QueryColumnsPane::SortTypeCol, QStringLiteral("Descending"));
    pane->item(0, QueryColumnsPane::CriteriaCol)->setText(QStringLiteral("LIKE 'A%'"));
    QVERIFY2(f.sql().endsWith(QStringLiteral("WHERE c.name LIKE 'A%' GROUP BY c.name HAVING SUM(o.total) > 100 "
                                             "ORDER BY SUM(o.total) DESC")),
             qPrintable(f.sql()));
    // The pane shows what the model now holds.
    QCOMPARE(pane->item(1, QueryColumnsPane::ExpressionCol)->text(), QStringLiteral("SUM(o.total)"));
    QCOMPARE(pane->item(1, QueryColumnsPane::SortOrderCol)->text(), QStringLiteral("1"));

    // Another sort key put first; the aggregate taken off keeps the sort on the bare column.
    choose(0, QueryColumnsPane::SortTypeCol, QStringLiteral("Ascending"));
    pane->item(0, QueryColumnsPane::SortOrderCol)->setText(QStringLiteral("1"));
    choose(1, QueryColumnsPane::AggregateCol, QString());
    QVERIFY2(f.sql().endsWith(QStringLiteral("ORDER BY c.name ASC, o.total DESC")), qPrintable(f.sql()));
    pane->item(1, QueryColumnsPane::VisibleCol)->setCheckState(Qt::Unchecked);
    QVERIFY2(f.sql().startsWith(QStringLiteral("SELECT c.name AS customer FROM")), qPrintable(f.sql()));
    // Clearing an expression removes its item.
    pane->item(0, QueryColumnsPane::ExpressionCol)->setText(QString());
    QCOMPARE(pane->rowCount(), 1);
}

void TestQueryDiagramPanes::everyActionWorksFromTheKeyboard()
{
    DiagramFixture f;
    f.diagram->show();
    f.diagram->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(f.diagram.get()));
    auto *tree = f.diagram->findChild<QTreeWidget *>(QStringLiteral("MetadataTreePane"));
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_Return);                  // customers, the first entry
    QTest::keyClick(tree, Qt::Key_Down);
    QTest::keyClick(tree, Qt::Key_Down);
    QTest::keyClick(tree, Qt::Key_Down);
    QTest::keyClick(tree, Qt::Key_Return);                  // big_orders
    QCOMPARE(f.boxNames(), (QStringList{"customers", "big_orders"}));

    QueryDiagramView *view = f.view();
    view->setFocus();
    QVERIFY(view->hasFocus() && view->currentBox());
    QCOMPARE(view->currentBox()->referenceName(), QStringLiteral("big_orders")); // the one just added
    QTest::keyClick(view, Qt::Key_Tab);                     // past the last box: leaves the diagram
    QVERIFY(!view->hasFocus());
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Tab);
    QVERIFY(view->currentBox());
    QCOMPARE(view->currentBox()->referenceName(), QStringLiteral("customers"));
    QTest::keyClick(view, Qt::Key_Down);
    QTest::keyClick(view, Qt::Key_Down);
    QTest::keyClick(view, Qt::Key_Space);                   // customers.name
    QCOMPARE(f.sql(), QStringLiteral("SELECT customers.name FROM customers, big_orders"));

    // Ctrl+L links the current column through a dialog.
    bool dialogSeen = false;
    QTimer::singleShot(0, this, [&] {
        auto *dialog = qobject_cast<QueryLinkDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        // A failed check below must not leave the dialog waiting for ever.
        const auto close = qScopeGuard([dialog] {
            if (dialog->isVisible())
                dialog->reject();
        });
        dialogSeen = true;
        QCOMPARE(dialog->leftOwner(), QStringLiteral("customers"));
        QCOMPARE(dialog->leftColumn(), QStringLiteral("name"));
        QCOMPARE(dialog->rightOwner(), QStringLiteral("big_orders"));
        // The dialog's own focus widget: the offscreen platform may not move the application's
        // focus into a modal dialog opened from a key press.
        QCOMPARE(dialog->focusWidget()->objectName(), QStringLiteral("cbRightObject"));
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab); // to the right-hand column list
        QCOMPARE(dialog->focusWidget()->objectName(), QStringLiteral("cbRightColumn"));
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Down); // "total"
        QCOMPARE(dialog->rightColumn(), QStringLiteral("total"));
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    QTest::keyClick(view, Qt::Key_L, Qt::ControlModifier);
    QVERIFY(dialogSeen);
    QVERIFY2(f.sql().endsWith(QStringLiteral("FROM customers INNER JOIN big_orders ON customers.name = big_orders.total")),
             qPrintable(f.sql()));

    // Del removes the current box with its items and links.
    QTest::keyClick(view, Qt::Key_Tab);
    QVERIFY(view->currentBox());
    QCOMPARE(view->currentBox()->referenceName(), QStringLiteral("big_orders"));
    QTest::keyClick(view, Qt::Key_Delete);
    QCOMPARE(f.sql(), QStringLiteral("SELECT customers.name FROM customers"));
    QVERIFY(view->currentBox());
    QCOMPARE(view->currentBox()->referenceName(), QStringLiteral("customers"));
}

// Renders the diagram the way the screenshots show it; with VANTRY_SCREENSHOT_DIR set the picture
// is saved there as qb-diagram.png.
void TestQueryDiagramPanes::drawsAThreeTableJoinWithAUnion()
{
    DiagramFixture f;
    QueryDiagramOptions options;
    options.showTreePane = true;
    options.linkPainter = 1;
    f.diagram->applyOptions(options);
    f.diagram->resize(1280, 760);
    f.diagram->show();
    QVERIFY(QTest::qWaitForWindowExposed(f.diagram.get()));
    f.diagram->addObject(QStringLiteral("customers"));
    f.diagram->addObject(QStringLiteral("orders"));
    f.diagram->addObject(QStringLiteral("items"));
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
    f.diagram->setColumnSelected(QStringLiteral("orders"), QStringLiteral("total"), true);
    f.diagram->setColumnSelected(QStringLiteral("items"), QStringLiteral("product"), true);
    emit f.view()->linkTypeRequested(1, Link::Left);
    f.diagram->addUnionPart();
    f.diagram->addObject(QStringLiteral("big_orders"));
    f.diagram->setColumnSelected(QStringLiteral("big_orders"), QStringLiteral("id"), true);
    f.diagram->setColumnSelected(QStringLiteral("big_orders"), QStringLiteral("total"), true);
    f.diagram->setCurrentTab(0);
    QCOMPARE(f.diagram->tabCount(), 2);
    QCOMPARE(f.view()->lines().size(), 2);
    QTest::qWait(100); // let the tab row lay itself out again
    const QImage image = f.diagram->grab().toImage();
    QVERIFY(!image.isNull());
    const QString dir = qEnvironmentVariable("VANTRY_SCREENSHOT_DIR");
    if (!dir.isEmpty())
        QVERIFY(image.save(dir + QStringLiteral("/qb-diagram.png")));
}

QTEST_MAIN(TestQueryDiagramPanes)
#include "tst_QueryDiagramPanes.moc"
