#include "core/interchange/XlsxSheetParser.h"

#include "core/interchange/WorkbookSheetBuilder.h"
#include "core/interchange/XlsxParts.h"
#include "core/interchange/XlsxXmlScanner.h"

#include <QDateTime>

#include <charconv>

namespace {

// Splits a cell reference ("AB12") into its column and row; false when it is not one. Parts past
// the sheet's limits are capped rather than overflowed, so the builder reports them.
bool parseReference(QByteArrayView ref, int &row, int &column)
{
    qsizetype i = 0;
    int col = 0;
    for (; i < ref.size(); ++i) {
        const char c = ref[i];
        if (c >= 'a' && c <= 'z')
            col = qMin(col * 26 + (c - 'a' + 1), 1 << 24);
        else if (c >= 'A' && c <= 'Z')
            col = qMin(col * 26 + (c - 'A' + 1), 1 << 24);
        else
            break;
    }
    if (i == 0 || i == ref.size())
        return false;
    int r = 0;
    for (; i < ref.size(); ++i) {
        if (ref[i] < '0' || ref[i] > '9')
            return false;
        r = qMin(r * 10 + (ref[i] - '0'), 1 << 24);
    }
    row = r;
    column = col;
    return true;
}

bool parseNumber(QByteArrayView text, double &value)
{
    const char *begin = text.data();
    const char *end = begin + text.size();
    if (begin < end && *begin == '+')
        ++begin;
    const auto parsed = std::from_chars(begin, end, value);
    return begin < end && parsed.ec == std::errc() && parsed.ptr == end;
}

// A plain integer of up to 15 digits is already in its shortest form and needs no conversion.
bool isPlainInteger(QByteArrayView text)
{
    const qsizetype start = text.startsWith('-') ? 1 : 0;
    const qsizetype digits = text.size() - start;
    if (digits < 1 || digits > 15 || (text[start] == '0' && digits > 1) || text == "-0")
        return false;
    for (qsizetype i = start; i < text.size(); ++i)
        if (text[i] < '0' || text[i] > '9')
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

// Appends the text inside the element the scanner has just opened, its children's included, and
// leaves the scanner on the element's end; false when the XML fails.
bool readElementText(XlsxXmlScanner &xml, QByteArray &text)
{
    for (int depth = 1; depth > 0;) {
        switch (xml.next()) {
        case XlsxXmlScanner::StartElement: ++depth; break;
        case XlsxXmlScanner::EndElement: --depth; break;
        case XlsxXmlScanner::Text: text.append(xml.text()); break;
        default: return false;
        }
    }
    return true;
}

// Appends the text of an inline string (<is>): its <t> texts, the runs' included and the
// phonetic guides (<rPh>) left out.
bool readRichText(XlsxXmlScanner &xml, QByteArray &text)
{
    int phonetic = 0;
    for (int depth = 1; depth > 0;) {
        switch (xml.next()) {
        case XlsxXmlScanner::StartElement:
            if (xml.name() == "rPh")
                ++phonetic;
            if (xml.name() == "t" && phonetic == 0) {
                if (!readElementText(xml, text))
                    return false;
                break;
            }
            ++depth;
            break;
        case XlsxXmlScanner::EndElement:
            if (xml.name() == "rPh")
                --phonetic;
            --depth;
            break;
        case XlsxXmlScanner::Text: break;
        default: return false;
        }
    }
    return true;
}

} // namespace

QString XlsxSheetParser::cellText(CellType type, int style, const QByteArray &value, bool &ok) const
{
    ok = true;
    switch (type) {
    case CellType::Number: {
        const SerialKind kind = style >= 0 && style < m_styleKinds.size() ? m_styleKinds[style] : SerialKind::Number;
        if (kind == SerialKind::Number && isPlainInteger(value))
            return QString::fromLatin1(value);
        double number = 0;
        ok = parseNumber(value, number);
        if (!ok)
            return {};
        return kind == SerialKind::Number ? numberText(number) : serialText(number, kind, m_date1904);
    }
    case CellType::SharedString: {
        int index = -1;
        const auto parsed = std::from_chars(value.constData(), value.constData() + value.size(), index);
        ok = parsed.ec == std::errc() && parsed.ptr == value.constData() + value.size() && index >= 0 && index < m_sharedStrings.size();
        return ok ? m_sharedStrings[index] : QString();
    }
    case CellType::Boolean:
        return value == "1" || value == "true" ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    case CellType::IsoDate:
        return isoCellText(QString::fromUtf8(value));
    case CellType::Text:
        break;
    }
    // A formula's text ("str"), an error such as "#DIV/0!" ("e") and inline strings are text as they stand.
    return decodeXlsxEscapes(QString::fromUtf8(value));
}

QString XlsxSheetParser::parse(XlsxXmlScanner &xml, WorkbookSheetBuilder &sheet) const
{
    int row = 0;
    int column = 0;
    bool inCell = false;
    CellType type = CellType::Number;
    int style = -1;
    QByteArray value;  // reused from cell to cell
    bool hasValue = false;
    for (;;) {
        const auto token = xml.next();
        if (token == XlsxXmlScanner::StartElement) {
            const QByteArrayView name = xml.name();
            if (name == "c") {
                const QByteArrayView ref = xml.attribute("r");
                // Cells and rows without a reference follow the previous one.
                if (ref.isEmpty()) {
                    ++column;
                    if (row == 0)
                        row = 1;
                } else if (!parseReference(ref, row, column)) {
                    return QStringLiteral("the cell reference \"%1\" is not valid").arg(QString::fromUtf8(ref));
                }
                const QByteArrayView t = xml.attribute("t");
                type = t.isEmpty() || t == "n"   ? CellType::Number
                       : t == "s"                ? CellType::SharedString
                       : t == "b"                ? CellType::Boolean
                       : t == "d"                ? CellType::IsoDate
                                                 : CellType::Text;
                const QByteArrayView s = xml.attribute("s");
                style = -1;
                if (!s.isEmpty())
                    std::from_chars(s.data(), s.data() + s.size(), style);
                value.clear();
                hasValue = false;
                inCell = true;
            } else if (name == "row") {
                const QByteArrayView r = xml.attribute("r");
                int number = row + 1;
                if (!r.isEmpty()) {
                    const auto parsed = std::from_chars(r.data(), r.data() + r.size(), number);
                    if (parsed.ec != std::errc() || parsed.ptr != r.data() + r.size() || number < 1)
                        return QStringLiteral("the row number \"%1\" is not valid").arg(QString::fromUtf8(r));
                }
                row = number;
                column = 0;
                sheet.reachRow(row);
            } else if (inCell && name == "v") {
                if (!readElementText(xml, value))
                    return {};
                hasValue = true;
            } else if (inCell && name == "is") {
                if (!readRichText(xml, value))
                    return {};
                hasValue = true;
            } else if (inCell) {
                // A formula's text: its cached value is in <v>.
                QByteArray skipped;
                if (!readElementText(xml, skipped))
                    return {};
            }
        } else if (token == XlsxXmlScanner::EndElement) {
            const QByteArrayView name = xml.name();
            if (name == "c" && inCell) {
                inCell = false;
                if (!hasValue || value.isEmpty())
                    continue;
                bool ok = true;
                const QString text = cellText(type, style, value, ok);
                if (!ok)
                    return QStringLiteral("the cell in row %1, column %2 holds \"%3\", which is not a valid value of its type")
                        .arg(row)
                        .arg(column)
                        .arg(QString::fromUtf8(value.left(40)));
                sheet.setCell(row, column, text);
            } else if (name == "sheetData") {
                break;
            }
        } else if (token == XlsxXmlScanner::EndOfDocument || token == XlsxXmlScanner::Invalid) {
            break;
        }
    }
    return {};
}
