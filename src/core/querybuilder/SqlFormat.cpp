#include "core/querybuilder/SqlFormat.h"

#include <QSettings>

namespace {

bool readBool(QSettings &s, const QString &key, bool fallback)
{
    const QVariant v = s.value(key);
    if (!v.isValid())
        return fallback;
    const QString text = v.toString().trimmed().toUpper();
    if (text == QLatin1String("TRUE") || text == QLatin1String("YES") || text == QLatin1String("Y") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("FALSE") || text == QLatin1String("NO") || text == QLatin1String("N") || text == QLatin1String("0"))
        return false;
    return fallback;
}

int readInt(QSettings &s, const QString &key, int fallback, int low, int high)
{
    bool ok = false;
    const int v = s.value(key).toString().toInt(&ok);
    return ok ? qBound(low, v, high) : fallback;
}

QString boolText(bool v)
{
    return v ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
}

} // namespace

bool SqlFormat::operator==(const SqlFormat &o) const
{
    return mainPartNewLine == o.mainPartNewLine && keywordsNewLine == o.keywordsNewLine && partIndent == o.partIndent
           && globalIndent == o.globalIndent && selectItemNewLine == o.selectItemNewLine
           && fromObjectNewLine == o.fromObjectNewLine && fromJoinNewLine == o.fromJoinNewLine
           && whereNewLine == o.whereNewLine && whereIndent == o.whereIndent && groupItemNewLine == o.groupItemNewLine
           && havingNewLine == o.havingNewLine && havingIndent == o.havingIndent;
}

SqlFormat SqlFormat::mainQueryDefaults()
{
    return SqlFormat();
}

SqlFormat SqlFormat::subqueryDefaults()
{
    SqlFormat f;
    f.mainPartNewLine = false;
    f.fromJoinNewLine = false;
    f.globalIndent = 2;
    return f;
}

SqlFormat SqlFormat::derivedQueryDefaults()
{
    SqlFormat f;
    f.globalIndent = 2;
    return f;
}

void SqlFormat::read(QSettings &s, const QString &section)
{
    s.beginGroup(section);
    mainPartNewLine = readBool(s, QStringLiteral("MainPartNewLine"), mainPartNewLine);
    keywordsNewLine = readBool(s, QStringLiteral("KeywordsNewLine"), keywordsNewLine);
    partIndent = readInt(s, QStringLiteral("PartIndent"), partIndent, 0, 40);
    globalIndent = readInt(s, QStringLiteral("GlobalIndent"), globalIndent, 0, 40);
    selectItemNewLine = readBool(s, QStringLiteral("SelectItemNewLine"), selectItemNewLine);
    fromObjectNewLine = readBool(s, QStringLiteral("FromObjectNewLine"), fromObjectNewLine);
    fromJoinNewLine = readBool(s, QStringLiteral("FromJoinNewLine"), fromJoinNewLine);
    whereNewLine = readInt(s, QStringLiteral("WhereNewLine"), whereNewLine, 0, 3);
    whereIndent = readInt(s, QStringLiteral("WhereIndent"), whereIndent, 0, 40);
    groupItemNewLine = readBool(s, QStringLiteral("GroupItemNewLine"), groupItemNewLine);
    havingNewLine = readInt(s, QStringLiteral("HavingNewLine"), havingNewLine, 0, 3);
    havingIndent = readInt(s, QStringLiteral("HavingIndent"), havingIndent, 0, 40);
    s.endGroup();
}

void SqlFormat::write(QSettings &s, const QString &section) const
{
    s.beginGroup(section);
    s.setValue(QStringLiteral("MainPartNewLine"), boolText(mainPartNewLine));
    s.setValue(QStringLiteral("KeywordsNewLine"), boolText(keywordsNewLine));
    s.setValue(QStringLiteral("PartIndent"), partIndent);
    s.setValue(QStringLiteral("GlobalIndent"), globalIndent);
    s.setValue(QStringLiteral("SelectItemNewLine"), boolText(selectItemNewLine));
    s.setValue(QStringLiteral("FromObjectNewLine"), boolText(fromObjectNewLine));
    s.setValue(QStringLiteral("FromJoinNewLine"), boolText(fromJoinNewLine));
    s.setValue(QStringLiteral("WhereNewLine"), whereNewLine);
    s.setValue(QStringLiteral("WhereIndent"), whereIndent);
    s.setValue(QStringLiteral("GroupItemNewLine"), boolText(groupItemNewLine));
    s.setValue(QStringLiteral("HavingNewLine"), havingNewLine);
    s.setValue(QStringLiteral("HavingIndent"), havingIndent);
    s.endGroup();
}

void GeneratorOptions::read(QSettings &s)
{
    s.beginGroup(QStringLiteral("Builder"));
    wordWrap = readBool(s, QStringLiteral("WordWrap"), wordWrap);
    rightMargin = readInt(s, QStringLiteral("RightMargin"), rightMargin, 10, 10000);
    parenthesizeAndGroups = readBool(s, QStringLiteral("ParenthesizeANDGroups"), parenthesizeAndGroups);
    parenthesizeSingleCriterion = readBool(s, QStringLiteral("ParenthesizeSingleCriterion"), parenthesizeSingleCriterion);
    s.endGroup();
    mainQuery.read(s, QStringLiteral("MainQuery"));
    subqueries.read(s, QStringLiteral("Subqueries"));
    derivedQueries.read(s, QStringLiteral("DerivedQueries"));
}

void GeneratorOptions::write(QSettings &s) const
{
    s.beginGroup(QStringLiteral("Builder"));
    s.setValue(QStringLiteral("WordWrap"), boolText(wordWrap));
    s.setValue(QStringLiteral("RightMargin"), rightMargin);
    s.setValue(QStringLiteral("ParenthesizeANDGroups"), boolText(parenthesizeAndGroups));
    s.setValue(QStringLiteral("ParenthesizeSingleCriterion"), boolText(parenthesizeSingleCriterion));
    s.endGroup();
    mainQuery.write(s, QStringLiteral("MainQuery"));
    subqueries.write(s, QStringLiteral("Subqueries"));
    derivedQueries.write(s, QStringLiteral("DerivedQueries"));
}
