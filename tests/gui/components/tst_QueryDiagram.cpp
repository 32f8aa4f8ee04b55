// The diagram's edits reach the engine as models and come back as SQL; text given to the engine
// comes back as boxes, links and tabs.
#include "QueryDiagramFixture.h"

#include "gui/components/QueryLinkLine.h"

#include <QtTest>

class TestQueryDiagram : public QObject
{
    Q_OBJECT
private slots:
    void tickingColumnsWritesTheSelectList();
    void addingATableSuggestsItsForeignKeyJoin();
    void linkingColumnsWritesTheJoin();
    void removingAnObjectTakesItsItemsAndLinks();
    void textOnTheEngineRedrawsBoxesLinksAndTabs();
    void aRefusedWakeKeepsTheLoadedText();
    void unionAndDerivedTablesGetTabs();
};

void TestQueryDiagram::tickingColumnsWritesTheSelectList()
{
    DiagramFixture f;
    QCOMPARE(f.diagram->addObject(QStringLiteral("CUSTOMERS")), QStringLiteral("customers")); // catalogue's spelling
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("region"), true);
    QCOMPARE(f.sql(), QStringLiteral("SELECT customers.name, customers.region FROM customers"));
    // Ticking twice adds nothing; clearing takes the item away.
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("region"), false);
    QCOMPARE(f.sql(), QStringLiteral("SELECT customers.name FROM customers"));

    // A second copy of a table gets an alias of its own; its columns are told apart.
    QCOMPARE(f.diagram->addObject(QStringLiteral("customers")), QStringLiteral("customers1"));
    f.diagram->setColumnSelected(QStringLiteral("customers1"), QStringLiteral("name"), true);
    QVERIFY(f.sql().contains(QStringLiteral("SELECT customers.name, customers1.name FROM customers, customers customers1")));

    // The boxes show the ticks; the "*" row stands for every column.
    const QueryObjectBox *box = f.view()->box(QStringLiteral("customers"));
    QVERIFY(box);
    QCOMPARE(box->columns(), (QStringList{"*", "id", "name", "region"}));
    QVERIFY(box->isTicked(box->rowOf(QStringLiteral("name"))));
    QVERIFY(!box->isTicked(box->rowOf(QStringLiteral("region"))));
    f.diagram->setColumnSelected(QStringLiteral("customers1"), QStringLiteral("*"), true);
    QVERIFY(f.sql().contains(QStringLiteral("customers1.*")));
}

void TestQueryDiagram::addingATableSuggestsItsForeignKeyJoin()
{
    DiagramFixture f;
    f.diagram->addObject(QStringLiteral("customers"));
    f.diagram->addObject(QStringLiteral("orders"));
    f.diagram->addObject(QStringLiteral("items"));
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
    f.diagram->setColumnSelected(QStringLiteral("items"), QStringLiteral("product"), true);
    QCOMPARE(f.sql(), QStringLiteral("SELECT customers.name, items.product FROM customers "
                                     "INNER JOIN orders ON orders.customer_id = customers.id "
                                     "INNER JOIN items ON items.order_id = orders.id"));
    QCOMPARE(f.view()->lines().size(), 2);

    // A table with keys into two objects already there joins once, on both keys.
    DiagramFixture g;
    g.diagram->addObject(QStringLiteral("customers"));
    g.diagram->addObject(QStringLiteral("items"));
    g.diagram->addObject(QStringLiteral("orders"));
    QVERIFY2(g.sql().endsWith(QStringLiteral("FROM customers, items INNER JOIN orders ON orders.customer_id = customers.id "
                                             "AND items.order_id = orders.id")),
             qPrintable(g.sql()));
    QCOMPARE(g.view()->lines().size(), 2); // one line per pair of columns
}

void TestQueryDiagram::linkingColumnsWritesTheJoin()
{
    DiagramFixture f;
    f.diagram->addObject(QStringLiteral("customers"));
    f.diagram->addObject(QStringLiteral("big_orders"));
    QVERIFY(f.sql().endsWith(QStringLiteral("FROM customers, big_orders")));
    // Dragged from the later box to the earlier one: the later object is still the joined one.
    f.diagram->linkColumns(QStringLiteral("big_orders"), QStringLiteral("id"), QStringLiteral("customers"), QStringLiteral("id"));
    QVERIFY2(f.sql().endsWith(QStringLiteral("FROM customers INNER JOIN big_orders ON big_orders.id = customers.id")), qPrintable(f.sql()));
    // The same pair again changes nothing; another pair joins both conditions.
    f.diagram->linkColumns(QStringLiteral("big_orders"), QStringLiteral("id"), QStringLiteral("customers"), QStringLiteral("id"));
    f.diagram->linkColumns(QStringLiteral("customers"), QStringLiteral("region"), QStringLiteral("big_orders"), QStringLiteral("total"));
    QVERIFY(f.sql().endsWith(QStringLiteral("ON big_orders.id = customers.id AND customers.region = big_orders.total")));
    QCOMPARE(f.view()->lines().size(), 2);
    // A column linked to its own box, or an unknown object, is no link.
    const QString before = f.sql();
    f.diagram->linkColumns(QStringLiteral("customers"), QStringLiteral("id"), QStringLiteral("customers"), QStringLiteral("name"));
    f.diagram->linkColumns(QStringLiteral("nobody"), QStringLiteral("id"), QStringLiteral("customers"), QStringLiteral("name"));
    QCOMPARE(f.sql(), before);

    // The link's menu: join type, then deleting one line, then the other.
    emit f.view()->linkTypeRequested(0, Link::Left);
    QVERIFY(f.sql().contains(QStringLiteral("FROM customers LEFT JOIN big_orders ON")));
    emit f.view()->linkTypeRequested(0, Link::Full);
    QVERIFY(f.sql().contains(QStringLiteral("FULL OUTER JOIN big_orders")));
    emit f.view()->linkRemoveRequested(0, 1);
    QVERIFY(f.sql().endsWith(QStringLiteral("FULL OUTER JOIN big_orders ON big_orders.id = customers.id")));
    emit f.view()->linkRemoveRequested(0, 0);
    QVERIFY(f.sql().endsWith(QStringLiteral("FROM customers, big_orders")));
    QVERIFY(f.view()->lines().isEmpty());
}

void TestQueryDiagram::removingAnObjectTakesItsItemsAndLinks()
{
    DiagramFixture f;
    f.engine.setSql(QStringLiteral("select c.name, o.total, i.qty from customers c "
                                   "inner join orders o on o.customer_id = c.id "
                                   "inner join items i on i.order_id = o.id "
                                   "where o.total > 10 and c.region = 'north' group by c.name, o.total, i.qty "
                                   "order by o.total desc"));
    f.diagram->removeObject(QStringLiteral("O"));
    QCOMPARE(f.sql(), QStringLiteral("SELECT c.name, i.qty FROM customers c, items i WHERE c.region = 'north' "
                                     "GROUP BY c.name, i.qty"));
    QCOMPARE(f.boxNames(), (QStringList{"c", "i"}));
    QVERIFY(f.view()->lines().isEmpty());
    // Removing what is not there leaves the query alone.
    f.diagram->removeObject(QStringLiteral("o"));
    QCOMPARE(f.boxNames(), (QStringList{"c", "i"}));
}

void TestQueryDiagram::textOnTheEngineRedrawsBoxesLinksAndTabs()
{
    DiagramFixture f;
    f.engine.setSql(QStringLiteral("select c.name, o.total from customers c left join orders o on o.customer_id = c.id "
                                   "union all select name, 0 from big_orders"));
    QCOMPARE(f.diagram->tabCount(), 2);
    QCOMPARE(f.boxNames(), (QStringList{"c", "o"}));
    QCOMPARE(f.view()->lines().size(), 1);
    const QueryObjectBox *c = f.view()->box(QStringLiteral("c"));
    QVERIFY(c->isTicked(c->rowOf(QStringLiteral("name"))));
    QVERIFY(!c->isTicked(c->rowOf(QStringLiteral("id"))));

    f.diagram->setCurrentTab(1);
    QCOMPARE(f.boxNames(), (QStringList{"big_orders"}));
    // A bare column of the only object counts as its column; edits go to the shown part.
    const QueryObjectBox *b = f.view()->box(QStringLiteral("big_orders"));
    QCOMPARE(b->columns(), (QStringList{"*", "id", "total", "name"})); // "name" is not in the catalogue
    QVERIFY(b->isTicked(b->rowOf(QStringLiteral("name"))));
    f.diagram->setColumnSelected(QStringLiteral("big_orders"), QStringLiteral("name"), false);
    QVERIFY2(f.sql().endsWith(QStringLiteral("UNION ALL SELECT 0 FROM big_orders")), qPrintable(f.sql()));
    QCOMPARE(f.diagram->currentTab(), 1);

    // New text with fewer parts puts the diagram back on the first tab.
    f.engine.setSql(QStringLiteral("select * from items"));
    QCOMPARE(f.diagram->tabCount(), 1);
    QCOMPARE(f.boxNames(), (QStringList{"items"}));
    const QueryObjectBox *items = f.view()->box(QStringLiteral("items"));
    QVERIFY(items->isTicked(0));
}

void TestQueryDiagram::aRefusedWakeKeepsTheLoadedText()
{
    DiagramFixture f;
    const QString loaded = QStringLiteral("delete from customers where id = 1");
    f.engine.setSql(loaded);
    QVERIFY(f.engine.isSleeping());
    int asked = 0;
    f.engine.setWakeQueryHandler([&] { ++asked; return false; });
    f.diagram->addObject(QStringLiteral("customers"));
    QCOMPARE(asked, 1);
    QVERIFY(f.engine.isSleeping());
    QCOMPARE(f.engine.sql(), loaded);
    QVERIFY(f.boxNames().isEmpty());

    f.engine.setWakeQueryHandler([&] { ++asked; return true; });
    f.diagram->addObject(QStringLiteral("customers"));
    QVERIFY(!f.engine.isSleeping());
    QCOMPARE(f.boxNames(), QStringList{"customers"});
}

void TestQueryDiagram::unionAndDerivedTablesGetTabs()
{
    DiagramFixture f;
    f.diagram->addObject(QStringLiteral("customers"));
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
    f.diagram->addUnionPart();
    QCOMPARE(f.diagram->tabCount(), 2);
    QCOMPARE(f.diagram->currentTab(), 1);
    QVERIFY(f.boxNames().isEmpty());
    f.diagram->addObject(QStringLiteral("big_orders"));
    f.diagram->setColumnSelected(QStringLiteral("big_orders"), QStringLiteral("total"), true);
    QCOMPARE(f.sql(), QStringLiteral("SELECT customers.name FROM customers UNION SELECT big_orders.total FROM big_orders"));

    f.engine.setSql(QStringLiteral("select d.n from (select name as n from customers) d"));
    QCOMPARE(f.diagram->tabCount(), 1);
    const QueryObjectBox *d = f.view()->box(QStringLiteral("d"));
    QVERIFY(d && d->isDerived());
    QCOMPARE(d->columns(), (QStringList{"*", "n"}));
    QVERIFY(!f.diagram->openDerived(QStringLiteral("nothing")));
    QVERIFY(f.diagram->openDerived(QStringLiteral("d")));
    QCOMPARE(f.diagram->tabCount(), 2);
    QCOMPARE(f.diagram->tabTitle(1), QStringLiteral("d"));
    QCOMPARE(f.boxNames(), QStringList{"customers"});
    // Edits in the sub-query's tab change the derived table.
    f.diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("region"), true);
    QCOMPARE(f.sql(), QStringLiteral("SELECT d.n FROM ( SELECT name AS n, customers.region FROM customers ) d"));
    QCOMPARE(f.diagram->currentTab(), 1);
    // When the derived table goes, so does its tab.
    f.engine.setSql(QStringLiteral("select name from customers"));
    QCOMPARE(f.diagram->tabCount(), 1);
}

QTEST_MAIN(TestQueryDiagram)
#include "tst_QueryDiagram.moc"
