#include "core/interchange/XlsxParts.h"

#include "core/interchange/WorkbookPackage.h"
#include "core/interchange/WorkbookSheetBuilder.h"

#include <QHash>
#include <QXmlStreamReader>

namespace {

constexpr qint64 kMaxWorkbookPart = 64 * 1024 * 1024;
constexpr qint64 kMaxSharedStrings = 512 * 1024 * 1024;

bool isTrue(QStringView value)
{
    return value == QLatin1String("1") || value == QLatin1String("true");
}

// The relationship id attribute ("r:id"), whatever prefix its namespace has.
QString relationshipId(const QXmlStreamAttributes &attributes)
{
    for (const QXmlStreamAttribute &attribute : attributes)
        if (attribute.name() == QLatin1String("id") && !attribute.namespaceUri().isEmpty())
            return attribute.value().toString();
    return {};
}

void checkXml(const WorkbookPackage &package, const QString &part, const QXmlStreamReader &xml)
{
    if (xml.hasError())
        throwXlsxXmlError(package, part, xml);
}

} // namespace

void throwXlsxXmlError(const WorkbookPackage &package, const QString &part, const QXmlStreamReader &xml,
                       const QIODevice *device)
{
    throwXlsxXmlError(package, part, xml.lineNumber(), xml.errorString(), device);
}

void throwXlsxXmlError(const WorkbookPackage &package, const QString &part, qint64 line, const QString &error,
                       const QIODevice *device)
{
    const QString failure = device ? WorkbookPackage::partFailure(device) : QString();
    if (!failure.isEmpty())
        throwWorkbookError(package.file(), QStringLiteral("the part \"%1\" cannot be read: %2").arg(part, failure));
    throwWorkbookError(package.file(), QStringLiteral("the part \"%1\" is not valid XML (line %2: %3)").arg(part).arg(line).arg(error));
}

QString decodeXlsxEscapes(const QString &text)
{
    if (!text.contains(QLatin1String("_x")))
        return text;
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'_' && i + 6 < text.size() && text[i + 1] == u'x' && text[i + 6] == u'_') {
            bool ok = false;
            const ushort code = text.mid(i + 2, 4).toUShort(&ok, 16);
            if (ok) {
                result += QChar(code);
                i += 6;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

QString readXlsxRichText(QXmlStreamReader &xml)
{
    QString text;
    int phonetic = 0;
    int depth = 1;
    while (depth > 0 && !xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (xml.name() == QLatin1String("rPh"))
                ++phonetic;
            if (xml.name() == QLatin1String("t") && phonetic == 0) {
                text += xml.readElementText(QXmlStreamReader::IncludeChildElements);
                break;  // readElementText stands on the end of <t>
            }
            ++depth;
            break;
        case QXmlStreamReader::EndElement:
            if (xml.name() == QLatin1String("rPh"))
                --phonetic;
            --depth;
            break;
        default:
            break;
        }
    }
    return decodeXlsxEscapes(text);
}

XlsxWorkbookInfo readXlsxWorkbook(const WorkbookPackage &package, const QString &workbookPart)
{
    XlsxWorkbookInfo info;
    const auto rels = package.relationships(workbookPart);
    QXmlStreamReader xml(package.readPart(workbookPart, kMaxWorkbookPart));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("workbookPr")) {
            info.date1904 = isTrue(xml.attributes().value(QLatin1String("date1904")));
        } else if (xml.name() == QLatin1String("sheet")) {
            const QXmlStreamAttributes attributes = xml.attributes();
            info.names.append(attributes.value(QLatin1String("name")).toString());
            info.sheetParts.append(rels.value(relationshipId(attributes)).target);
        }
    }
    checkXml(package, workbookPart, xml);
    for (const WorkbookPackage::Relationship &rel : rels) {
        if (rel.type.endsWith(QLatin1String("/sharedStrings")))
            info.sharedStringsPart = rel.target;
        else if (rel.type.endsWith(QLatin1String("/styles")))
            info.stylesPart = rel.target;
    }
    return info;
}

QVector<SerialKind> readXlsxStyles(const WorkbookPackage &package, const QString &stylesPart)
{
    QVector<SerialKind> kinds;
    if (stylesPart.isEmpty() || !package.hasPart(stylesPart))
        return kinds;
    QHash<int, SerialKind> custom;
    QXmlStreamReader xml(package.readPart(stylesPart, kMaxWorkbookPart));
    // Only the top-level number formats and cell formats count: differential formats and cell
    // style formats have elements of the same names.
    QStringView section;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::EndElement && (xml.name() == QLatin1String("numFmts") || xml.name() == QLatin1String("cellXfs"))) {
            section = {};
        } else if (token == QXmlStreamReader::StartElement) {
            if (xml.name() == QLatin1String("numFmts"))
                section = u"numFmts";
            else if (xml.name() == QLatin1String("cellXfs"))
                section = u"cellXfs";
            else if (xml.name() == QLatin1String("dxfs") || xml.name() == QLatin1String("cellStyleXfs"))
                section = {};
            else if (section == u"numFmts" && xml.name() == QLatin1String("numFmt")) {
                const QXmlStreamAttributes attributes = xml.attributes();
                custom.insert(attributes.value(QLatin1String("numFmtId")).toInt(),
                              formatCodeKind(attributes.value(QLatin1String("formatCode"))));
            } else if (section == u"cellXfs" && xml.name() == QLatin1String("xf")) {
                const int id = xml.attributes().value(QLatin1String("numFmtId")).toInt();
                kinds.append(custom.contains(id) ? custom.value(id) : builtInFormatKind(id));
            }
        }
    }
    checkXml(package, stylesPart, xml);
    return kinds;
}

QStringList readXlsxSharedStrings(const WorkbookPackage &package, const QString &part)
{
    QStringList strings;
    if (part.isEmpty() || !package.hasPart(part))
        return strings;
    // Read as it decompresses: the count the part claims is not trusted to size anything.
    auto device = package.openPart(part, kMaxSharedStrings);
    QXmlStreamReader xml(device.get());
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("si"))
            strings.append(readXlsxRichText(xml));
    }
    if (xml.hasError())
        throwXlsxXmlError(package, part, xml, device.get());
    return strings;
}
