#include "core/interchange/XlsbReader.h"

#include "core/interchange/Biff12Records.h"
#include "core/interchange/WorkbookPackage.h"
#include "core/interchange/WorkbookSheetBuilder.h"

#include <QHash>

namespace {

constexpr qint64 kMaxWorkbookPart = 64 * 1024 * 1024;
constexpr qint64 kMaxSharedStrings = 512 * 1024 * 1024;
constexpr qint64 kMaxSheetPart = qint64(4) * 1024 * 1024 * 1024;

// Record types of the workbook, styles, shared strings and sheet parts.
enum Record {
    RowHeader = 0,
    CellBlank = 1,
    CellRk = 2,
    CellError = 3,
    CellBool = 4,
    CellReal = 5,
    CellString = 6,
    CellSharedString = 7,
    FormulaString = 8,
    FormulaNumber = 9,
    FormulaBool = 10,
    FormulaError = 11,
    SharedStringItem = 19,
    NumberFormat = 44,
    CellFormat = 47,
    CellRichString = 62,
    EndSheetData = 146,
    WorkbookProperties = 153,
    SheetBundle = 156,
};

// Why a part's records stopped early: the package's reason when it has one, else the records'.
QString readFailure(const Biff12RecordReader &records, const QIODevice *device)
{
    const QString failure = WorkbookPackage::partFailure(device);
    return failure.isEmpty() ? records.error() : failure;
}

} // namespace

XlsbReader::XlsbReader(std::unique_ptr<WorkbookPackage> package, const QString &workbookPart)
    : m_package(std::move(package))
{
    readWorkbook(workbookPart);
    readStyles();
}

XlsbReader::~XlsbReader() = default;

void XlsbReader::readWorkbook(const QString &workbookPart)
{
    const auto rels = m_package->relationships(workbookPart);
    auto device = m_package->openPart(workbookPart, kMaxWorkbookPart);
    Biff12RecordReader records(device.get());
    while (records.next()) {
        Biff12Fields fields = records.fields();
        if (records.type() == WorkbookProperties) {
            m_info.date1904 = fields.u32() & 1;
        } else if (records.type() == SheetBundle) {
            fields.skip(8);  // the sheet's state and tab id
            const QString relationship = fields.nullableWideString();
            const QString name = fields.wideString();
            if (!fields.ok())
                throwWorkbookError(m_package->file(), QStringLiteral("the sheet list in \"%1\" is damaged").arg(workbookPart));
            m_info.names.append(name);
            m_info.sheetParts.append(rels.value(relationship).target);
        }
    }
    if (!readFailure(records, device.get()).isEmpty())
        throwWorkbookError(m_package->file(), QStringLiteral("the part \"%1\" cannot be read: %2")
                                                  .arg(workbookPart, readFailure(records, device.get())));
    for (const WorkbookPackage::Relationship &rel : rels) {
        if (rel.type.endsWith(QLatin1String("/sharedStrings")))
            m_info.sharedStringsPart = rel.target;
        else if (rel.type.endsWith(QLatin1String("/styles")))
            m_info.stylesPart = rel.target;
    }
}

void XlsbReader::readStyles()
{
    if (m_info.stylesPart.isEmpty() || !m_package->hasPart(m_info.stylesPart))
        return;
    auto device = m_package->openPart(m_info.stylesPart, kMaxWorkbookPart);
    Biff12RecordReader records(device.get());
    QHash<int, SerialKind> custom;
    while (records.next()) {
        Biff12Fields fields = records.fields();
        if (records.type() == NumberFormat) {
            const int id = fields.u16();
            const QString code = fields.wideString();
            if (fields.ok())
                custom.insert(id, formatCodeKind(code));
        } else if (records.type() == CellFormat) {
            // Cell style formats have no parent; the cells' formats are the others, in order.
            const quint16 parent = fields.u16();
            const int id = fields.u16();
            if (parent != 0xFFFF)
                m_styleKinds.append(custom.contains(id) ? custom.value(id) : builtInFormatKind(id));
        }
    }
    if (!readFailure(records, device.get()).isEmpty())
        throwWorkbookError(m_package->file(), QStringLiteral("the part \"%1\" cannot be read: %2")
                                                  .arg(m_info.stylesPart, readFailure(records, device.get())));
}

void XlsbReader::readSharedStrings()
{
    m_sharedStringsRead = true;
    if (m_info.sharedStringsPart.isEmpty() || !m_package->hasPart(m_info.sharedStringsPart))
        return;
    auto device = m_package->openPart(m_info.sharedStringsPart, kMaxSharedStrings);
    Biff12RecordReader records(device.get());
    while (records.next()) {
        if (records.type() != SharedStringItem)
            continue;
        Biff12Fields fields = records.fields();
        fields.skip(1);  // rich text and phonetic flags
        const QString text = fields.wideString();
        if (!fields.ok())
            throwWorkbookError(m_package->file(), QStringLiteral("the shared string %1 in \"%2\" is damaged")
                                                      .arg(m_sharedStrings.size() + 1)
                                                      .arg(m_info.sharedStringsPart));
        m_sharedStrings.append(text);
    }
    if (!readFailure(records, device.get()).isEmpty())
        throwWorkbookError(m_package->file(), QStringLiteral("the part \"%1\" cannot be read: %2")
                                                  .arg(m_info.sharedStringsPart, readFailure(records, device.get())));
}

WorkbookSheet XlsbReader::readSheet(int index, const Progress &progress)
{
    if (index < 0 || index >= m_info.names.size())
        throwWorkbookError(m_package->file(), QStringLiteral("it has no sheet number %1").arg(index + 1));
    if (!m_sharedStringsRead)
        readSharedStrings();
    const QString &name = m_info.names[index];
    const QString &part = m_info.sheetParts[index];
    if (part.isEmpty() || !m_package->hasPart(part))
        throwWorkbookError(m_package->file(), QStringLiteral("the part of the sheet \"%1\" is missing").arg(name));

    WorkbookSheetBuilder sheet(m_package->file(), name, progress);
    auto device = m_package->openPart(part, kMaxSheetPart);
    Biff12RecordReader records(device.get());
    int row = 1;
    auto damaged = [&](const QString &what) {
        throwWorkbookError(m_package->file(), QStringLiteral("the sheet \"%1\" is damaged: %2").arg(name, what));
    };
    while (records.next()) {
        const int type = records.type();
        if (type == EndSheetData)
            break;
        Biff12Fields fields = records.fields();
        if (type == RowHeader) {
            row = int(qMin<quint32>(fields.u32(), 1u << 30)) + 1;
            sheet.reachRow(row);
            continue;
        }
        if (!(type >= CellRk && type <= FormulaError) && type != CellRichString)
            continue;
        const int column = int(qMin<quint32>(fields.u32(), 1u << 30)) + 1;
        const quint32 style = fields.u32() & 0xFFFFFF;
        const SerialKind kind = style < quint32(m_styleKinds.size()) ? m_styleKinds[int(style)] : SerialKind::Number;
        auto number = [&](double value) {
            return kind == SerialKind::Number ? numberText(value) : serialText(value, kind, m_info.date1904);
        };
        QString text;
        switch (type) {
        case CellRk: text = number(rkNumber(fields.u32())); break;
        case CellReal:
        case FormulaNumber: text = number(fields.f64()); break;
        case CellError:
        case FormulaError: text = cellErrorText(fields.u8()); break;
        case CellBool:
        case FormulaBool: text = fields.u8() ? QStringLiteral("TRUE") : QStringLiteral("FALSE"); break;
        case CellString:
        case FormulaString: text = fields.wideString(); break;
        case CellRichString:
            fields.skip(1);
            text = fields.wideString();
            break;
        case CellSharedString: {
            const quint32 item = fields.u32();
            if (fields.ok() && item >= quint32(m_sharedStrings.size()))
                damaged(QStringLiteral("the cell in row %1, column %2 refers to shared string %3, which does not exist")
                            .arg(row)
                            .arg(column)
                            .arg(item));
            text = fields.ok() ? m_sharedStrings[int(item)] : QString();
            break;
        }
        default: break;
        }
        if (!fields.ok())
            damaged(QStringLiteral("the cell record in row %1 is cut short").arg(row));
        sheet.setCell(row, column, text);
    }
    if (!readFailure(records, device.get()).isEmpty())
        damaged(readFailure(records, device.get()));
    return sheet.take();
}
