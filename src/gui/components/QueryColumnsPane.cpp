#include "gui/components/QueryColumnsPane.h"

#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"

#include <QComboBox>
#include <QHeaderView>
#include <QMessageBox>

namespace {

const QStringList SortTypes{QString(), QStringLiteral("Ascending"), QStringLiteral("Descending")};
const QStringList Aggregates{QString(), QStringLiteral("COUNT"), QStringLiteral("SUM"), QStringLiteral("AVG"),
                             QStringLiteral("MIN"), QStringLiteral("MAX")};

ExprPart token(ExprPart::Kind kind, const QString &text) { return ExprPart{kind, text, SubqueryKind::Scalar, {}}; }

// The argument of an aggregate call, or the expression itself when it is not one.
Expr unwrapAggregate(const Expr &e)
{
    if (e.aggregate().isEmpty() || e.parts.size() < 3)
        return e;
    Expr inner;
    inner.parts = e.parts.mid(2, e.parts.size() - 3);
    return inner;
}

Expr wrapAggregate(const QString &function, const Expr &e)
{
    if (function.isEmpty())
        return e;
    Expr call;
    call.parts << token(ExprPart::Word, function) << token(ExprPart::LParen, QStringLiteral("("));
    call.parts += e.parts;
    call.parts << token(ExprPart::RParen, QStringLiteral(")"));
    return call;
}

// The sort item of a select item: by its expression, or by its alias.
int sortIndex(const QVector<SortItem> &orderBy, const SelectItem &item)
{
    for (int i = 0; i < orderBy.size(); ++i) {
        const Expr &e = orderBy.at(i).expression;
        if (e == item.expression)
            return i;
        if (!item.alias.isEmpty() && e.parts.size() == 1 && e.parts.first().text.compare(item.alias.name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

// Whether a condition is the expression followed by something ("price > 10" for "price").
bool isCriterionOf(const ConditionItem &c, const Expr &e)
{
    return !c.group && c.condition.parts.size() > e.parts.size() && c.condition.parts.mid(0, e.parts.size()) == e.parts;
}

ConditionGroup &criteriaGroup(SelectPart &part, const Expr &e)
{
    return e.aggregate().isEmpty() ? part.where : part.having;
}

} // namespace

QueryColumnsPane::QueryColumnsPane(QWidget *parent) : QTableWidget(parent)
{
    setObjectName(QStringLiteral("ColumnsPane"));
    setColumnCount(8);
    setHorizontalHeaderLabels({QStringLiteral("Expression"), QStringLiteral("Alias"), QStringLiteral("Visible"),
                               QStringLiteral("Sort Type"), QStringLiteral("Sort Order"), QStringLiteral("Aggregate"),
                               QStringLiteral("Grouping"), QStringLiteral("Criteria")});
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setStretchLastSection(true);
    setColumnWidth(ExpressionCol, 200);
    setColumnWidth(AliasCol, 100);
    setColumnWidth(VisibleCol, 60);
    setColumnWidth(SortTypeCol, 100);
    setColumnWidth(SortOrderCol, 75);
    setColumnWidth(AggregateCol, 90);
    setColumnWidth(GroupingCol, 70);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);
    setTabKeyNavigation(false); // Tab leaves the pane, arrows move between cells
    connect(this, &QTableWidget::cellChanged, this, &QueryColumnsPane::cellEdited);
}

void QueryColumnsPane::showPart(const Query &owner, int part, const DialectChoice &dialect)
{
    m_owner = owner;
    m_part = part;
    m_dialect = dialect;
    refill();
}

void QueryColumnsPane::refill()
{
    m_filling = true;
    const int currentRowWas = currentRow(), currentColumnWas = currentColumn();
    clearContents();
    const SelectPart *part = m_part >= 0 && m_part < m_owner.parts.size() ? &m_owner.parts.at(m_part) : nullptr;
    setRowCount(part ? part->items.size() : 0);
    const SqlGenerator generator(m_dialect);
    for (int row = 0; part && row < part->items.size(); ++row) {
        const SelectItem &item = part->items.at(row);
        const auto text = [&](int column, const QString &value) {
            setItem(row, column, new QTableWidgetItem(value));
        };
        const auto check = [&](int column, bool on) {
            auto *cell = new QTableWidgetItem;
            cell->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            cell->setCheckState(on ? Qt::Checked : Qt::Unchecked);
            setItem(row, column, cell);
        };
        const auto combo = [&](int column, const QStringList &values, const QString &value) {
            auto *box = new QComboBox;
            box->addItems(values);
            box->setCurrentIndex(qMax(0, values.indexOf(value)));
            connect(box, &QComboBox::textActivated, this, [this, row, column](const QString &t) { comboChosen(row, column, t); });
            setCellWidget(row, column, box);
        };
        text(ExpressionCol, generator.expression(item.expression));
        text(AliasCol, item.alias.name);
        check(VisibleCol, item.visible);
        const int sort = sortIndex(m_owner.orderBy, item);
        combo(SortTypeCol, SortTypes,
              sort < 0 ? QString() : m_owner.orderBy.at(sort).direction == SortItem::Descending ? SortTypes.at(2) : SortTypes.at(1));
        text(SortOrderCol, sort < 0 ? QString() : QString::number(sort + 1));
        combo(AggregateCol, Aggregates, item.expression.aggregate());
        check(GroupingCol, part->groupBy.contains(item.expression));
        QStringList criteria;
        const ConditionGroup &group = item.expression.aggregate().isEmpty() ? part->where : part->having;
        for (const ConditionItem &c : group.items)
            if (isCriterionOf(c, item.expression)) {
                Expr rest;
                rest.parts = c.condition.parts.mid(item.expression.parts.size());
                criteria << generator.expression(rest);
            }
        text(CriteriaCol, criteria.join(QStringLiteral(" AND ")));
    }
    if (currentRowWas >= 0 && currentRowWas < rowCount())
        setCurrentCell(currentRowWas, currentColumnWas);
    m_filling = false;
}

void QueryColumnsPane::apply(const PartEdit &edit)
{
    try {
        // Try the edit on a copy first, so a text that does not parse changes nothing.
        Query probe = m_owner;
        edit(probe, probe.parts[m_part]);
        if (m_apply)
            m_apply(edit);
    } catch (const SqlParseError &e) {
        QMessageBox::critical(this, QStringLiteral("Query Builder"), e.reason());
        refill();
    }
}

void QueryColumnsPane::cellEdited(int row, int column)
{
    if (m_filling || m_part >= m_owner.parts.size() || row >= m_owner.parts.at(m_part).items.size())
        return;
    const QTableWidgetItem *cell = item(row, column);
    const QString value = cell ? cell->text().trimmed() : QString();
    const bool checked = cell && cell->checkState() == Qt::Checked;
    const SqlDialect dialect = m_dialect.dialect;
    const SqlGenerator generator(m_dialect);
    switch (column) {
    case ExpressionCol:
        apply([=](Query &owner, SelectPart &part) {
            const Expr old = part.items.at(row).expression;
            if (value.isEmpty()) {
                part.items.remove(row);
                return;
            }
            const Expr now = Expr::fromText(value, dialect);
            part.items[row].expression = now;
            for (Expr &g : part.groupBy)
                if (g == old)
                    g = now;
            for (SortItem &s : owner.orderBy)
                if (s.expression == old)
                    s.expression = now;
        });
        break;
    case AliasCol:
        apply([=](Query &, SelectPart &part) { part.items[row].alias = value.isEmpty() ? Identifier() : Identifier::of(value); });
        break;
    case VisibleCol:
        apply([=](Query &, SelectPart &part) { part.items[row].visible = checked; });
        break;
    case SortOrderCol:
        apply([=](Query &owner, SelectPart &part) {
            const int at = sortIndex(owner.orderBy, part.items.at(row));
            bool ok = false;
            const int to = value.toInt(&ok) - 1;
            if (at < 0 && ok && to >= 0) {
                owner.orderBy.insert(qMin(to, int(owner.orderBy.size())), SortItem{part.items.at(row).expression, SortItem::Ascending, SortItem::NullsDefault});
            } else if (at >= 0 && (!ok || value.isEmpty())) {
                owner.orderBy.remove(at);
            } else if (at >= 0 && ok) {
                const SortItem s = owner.orderBy.takeAt(at);
                owner.orderBy.insert(qBound(0, to, int(owner.orderBy.size())), s);
            }
        });
        break;
    case GroupingCol:
        apply([=](Query &, SelectPart &part) {
            const Expr e = part.items.at(row).expression;
            part.groupBy.removeAll(e);
            if (checked)
                part.groupBy.append(e);
        });
        break;
    case CriteriaCol:
        apply([=](Query &, SelectPart &part) {
            const Expr e = part.items.at(row).expression;
            ConditionGroup &group = criteriaGroup(part, e);
            QVector<ConditionItem> kept;
            for (const ConditionItem &c : group.items)
                if (!isCriterionOf(c, e))
                    kept.append(c);
            group.items = kept;
            if (value.isEmpty())
                return;
            const ConditionGroup added = SqlParser::parseCondition(generator.expression(e) + QLatin1Char(' ') + value, dialect);
            if (added.op == ConditionGroup::And || added.items.size() == 1)
                group.items += added.items;
            else
                group.add(added);
        });
        break;
    default: break;
    }
}

void QueryColumnsPane::comboChosen(int row, int column, const QString &text)
{
    if (column == SortTypeCol) {
        apply([=](Query &owner, SelectPart &part) {
            const int at = sortIndex(owner.orderBy, part.items.at(row));
            if (text.isEmpty()) {
                if (at >= 0)
                    owner.orderBy.remove(at);
                return;
            }
            const SortItem::Direction d = text == SortTypes.at(2) ? SortItem::Descending : SortItem::Ascending;
            if (at >= 0)
                owner.orderBy[at].direction = d;
            else
                owner.orderBy.append(SortItem{part.items.at(row).expression, d, SortItem::NullsDefault});
        });
    } else if (column == AggregateCol) {
        apply([=](Query &owner, SelectPart &part) {
            SelectItem &item = part.items[row];
            const Expr old = item.expression;
            item.expression = wrapAggregate(text, unwrapAggregate(old));
            // An aggregate is not a grouping key; its sort follows it.
            part.groupBy.removeAll(old);
            for (SortItem &s : owner.orderBy)
                if (s.expression == old)
                    s.expression = item.expression;
        });
    }
}
