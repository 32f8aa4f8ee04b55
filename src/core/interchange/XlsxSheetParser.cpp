#include "core/interchange/XlsxSheetParser.h"

#include "core/interchange/WorkbookSheetBuilder.h"
#include "core/interchange/XlsxParts.h"

#include <QDateTime>
#include <QXmlStreamReader>

#include <charconv>

namespace {

// Splits a cell reference ("AB12") into its column and row; false when it is not one. Parts past
// the sheet's limits are capped rather than overflowed, so the builder reports them.
bool parseReference(QStringView ref, int &row, int &column)
{
    qsizetype i = 0;
    int col = 0;
    while (i < ref.size() && ref[i].isLetter() && ref[i].unicode() < 128) {
        col = qMin(col * 26 + (ref[i].toUpper().unicode() - 'A' + 1), 1 << 24);
        ++i;
    }
    if (i == 0 || i == ref.size())
        return false;
    int r = 0;
    for (; i < ref.size(); ++i) {
        if (!ref[i].isDigit())
            return false;
        r = qMin(r * 10 + (ref[i].unicode() - '0'), 1 << 24);
    }
    row = r;
    column = col;
    return true;
}

bool parseNumber(const QString &text, double &value)
{
    char buffer[64];
    if (text.size() >= qsizetype(sizeof buffer))
        return false;
    int length = 0;
    for (QChar c : text) {
        if (c.unicode() >= 128)
            return false;
        buffer[length++] = char(c.unicode());
    }
    const char *begin = buffer;
    if (length > 0 && *begin == '+')
        ++begin;
    const auto parsed = std::from_chars(begin, buffer + length, value);
    return parsed.ec == std::errc() && parsed.ptr == buffer + length;
}

// A plain integer of up to 15 digits is already in its shortest form and needs no conversion.
bool isPlainInteger(const QString &text)
{
    const qsizetype start = text.startsWith(u'-') ? 1 : 0;
    const qsizetype digits = text.size() - start;
    if (digits < 1 || digits > 15 || (text[start] == u'0' && digits > 1) || (start == 1 && text == QLatin1String("-0")))
        return false;
    for (qsizetype i = start; i < text.size(); ++i)
        if (text[i] < u'0' || text[i] > u'9')
            return false;
    return true;
}

// A cell of type "d" holds an ISO 8601 date or date and time.
QString isoCellText(const QString &value)
{
    if (value.size() == 10)
        return value;
    const QDateTime stamp = QDateTime::fromString(value.endsWith(u'Z') ? value.chopped(1) : value, Qt::ISODateWithMs);
    if (!stamp.isValid())
        return value;
    return stamp.toString(stamp.time().msec() ? QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz") : QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

} // namespace

QString XlsxSheetParser::cellText(QStringView type, int style, const QString &value, bool &ok) const
{
    ok = true;
    if (type.isEmpty() || type == u"n") {
        if (isPlainInteger(value) && (style < 0 || style >= m_styleKinds.size() || m_styleKinds[style] == SerialKind::Number))
            return value;
        double number = 0;
        if (!parseNumber(value, number)) {
            ok = false;
            return {};
        }
        const SerialKind kind = style >= 0 && style < m_styleKinds.size() ? m_styleKinds[style] : SerialKind::Number;
        return kind == SerialKind::Number ? numberText(number) : serialText(number, kind, m_date1904);
    }
    if (type == u"s") {
        bool isIndex = false;
        const int index = value.toInt(&isIndex);
        ok = isIndex && index >= 0 && index < m_sharedStrings.size();
        return ok ? m_sharedStrings[index] : QString();
    }
    if (type == u"b")
        return value == QLatin1String("1") || value == QLatin1String("true") ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    if (type == u"d")
        return isoCellText(value);
    // "str" (a formula's text), "e" (an error such as "#DIV/0!") and "inlineStr" are text as they stand.
    return decodeXlsxEscapes(value);
}

QString XlsxSheetParser::parse(QXmlStreamReader &xml, WorkbookSheetBuilder &sheet) const
{
    int row = 0;
    int column = 0;
    bool inCell = false;
    QString type;
    int style = -1;
    QString value;
    bool hasValue = false;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            const QStringView name = xml.name();
            if (name == u"c") {
                const QXmlStreamAttributes attributes = xml.attributes();
                const QStringView ref = attributes.value(QLatin1String("r"));
                // Cells and rows without a reference follow the previous one.
                if (ref.isEmpty()) {
                    ++column;
                    if (row == 0)
                        row = 1;
                } else if (!parseReference(ref, row, column)) {
                    return QStringLiteral("the cell reference \"%1\" is not valid").arg(ref);
                }
                type = attributes.value(QLatin1String("t")).toString();
                const QStringView s = attributes.value(QLatin1String("s"));
                style = s.isEmpty() ? -1 : s.toInt();
                value.clear();
                hasValue = false;
                inCell = true;
            } else if (name == u"row") {
                const QStringView r = xml.attributes().value(QLatin1String("r"));
                bool ok = true;
                row = r.isEmpty() ? row + 1 : r.toInt(&ok);
                if (!ok || row < 1)
                    return QStringLiteral("the row number \"%1\" is not valid").arg(r);
                column = 0;
                sheet.reachRow(row);
            } else if (inCell && name == u"v") {
                value = xml.readElementText(QXmlStreamReader::IncludeChildElements);
                hasValue = true;
            } else if (inCell && name == u"is") {
                value = readXlsxRichText(xml);
                hasValue = true;
            } else if (inCell) {
                xml.skipCurrentElement();  // a formula's text: its cached value is in <v>
            }
        } else if (token == QXmlStreamReader::EndElement) {
            const QStringView name = xml.name();
            if (name == u"c" && inCell) {
                inCell = false;
                if (!hasValue || value.isEmpty())
                    continue;
                bool ok = true;
                const QString text = cellText(type, style, value, ok);
                if (!ok)
                    return QStringLiteral("the cell in row %1, column %2 holds \"%3\", which is not a valid value of its type")
                        .arg(row)
                        .arg(column)
                        .arg(value.left(40));
                sheet.setCell(row, column, text);
            } else if (name == u"sheetData") {
                break;
            }
        }
    }
    return {};
}
