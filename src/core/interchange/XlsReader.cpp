#include "core/interchange/XlsReader.h"

#include "core/interchange/BiffRecords.h"
#include "core/interchange/CompoundFile.h"
#include "core/interchange/WorkbookSheetBuilder.h"

#include <QtEndian>

#include <cstring>

namespace {

quint16 u16(const char *p)
{
    return qFromLittleEndian<quint16>(p);
}

quint32 u32(const char *p)
{
    return qFromLittleEndian<quint32>(p);
}

double f64(const char *p)
{
    const quint64 bits = qFromLittleEndian<quint64>(p);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Excel 2.x to 4.x wrote a bare record stream, starting with a BOF record of their own type.
bool isOldBiff(const QByteArray &bytes)
{
    if (bytes.size() < 4)
        return false;
    const quint16 type = u16(bytes.constData());
    return (type == 0x0009 || type == 0x0209 || type == 0x0409) && u16(bytes.constData() + 2) <= 16;
}

// The smallest size of each cell record: row, column and cell format, then the value. Other
// records give 0.
int cellRecordSize(quint16 type)
{
    switch (type) {
    case BiffRecord::Number: return 14;
    case BiffRecord::Rk:
    case BiffRecord::LabelSst: return 10;
    case BiffRecord::MulRk: return 12;
    case BiffRecord::BoolErr: return 8;
    case BiffRecord::Formula: return 20;
    case BiffRecord::Label:
    case BiffRecord::RichString: return 8;
    default: return 0;
    }
}

// A formula's cached result is a double, unless its last two bytes are 0xFFFF: then its first
// byte tells a text (in the STRING record that follows), a boolean, an error or an empty text.
enum FormulaResult : quint8 { FormulaText = 0, FormulaBoolean = 1, FormulaError = 2 };

} // namespace

XlsReader::XlsReader(const QByteArray &bytes, const QString &file) : m_file(file)
{
    if (isOldBiff(bytes))
        throwWorkbookError(file, QStringLiteral("it is a workbook of Excel 2.x to 4.x, which is not supported"));
    {
        const CompoundFile compound(bytes, file);
        // Excel 97 and later name the stream "Workbook", Excel 5 and 95 "Book"; Office keeps a
        // workbook encrypted with a password in an "EncryptedPackage".
        if (compound.hasStream(QStringLiteral("Workbook")))
            m_stream = compound.stream(QStringLiteral("Workbook"));
        else if (compound.hasStream(QStringLiteral("Book")))
            m_stream = compound.stream(QStringLiteral("Book"));
        else if (compound.hasStream(QStringLiteral("EncryptedPackage")))
            throwWorkbookError(file, QStringLiteral("it is protected by a password"));
        else
            throwWorkbookError(file, QStringLiteral("it holds no workbook stream (it is another kind of document)"));
    }
    readXlsWorkbookGlobals(m_stream, file, m_globals);
    for (const XlsSheetEntry &sheet : std::as_const(m_globals.sheets))
        m_names.append(sheet.name);
}

WorkbookSheet XlsReader::readSheet(int index, const Progress &progress)
{
    if (index < 0 || index >= m_globals.sheets.size())
        throwWorkbookError(m_file, QStringLiteral("it has no sheet number %1").arg(index + 1));
    const XlsSheetEntry &entry = m_globals.sheets[index];
    const QVector<SerialKind> &kinds = m_globals.xfKinds;
    const bool date1904 = m_globals.date1904;
    auto damaged = [&](const QString &what) {
        throwWorkbookError(m_file, QStringLiteral("the sheet \"%1\" is damaged: %2").arg(entry.name, what));
    };
    WorkbookSheetBuilder sheet(m_file, entry.name, progress);
    auto setNumber = [&](int row, int column, quint16 xf, double value) {
        const SerialKind kind = xf < kinds.size() ? kinds[xf] : SerialKind::Number;
        sheet.setCell(row, column, kind == SerialKind::Number ? numberText(value) : serialText(value, kind, date1904));
    };
    auto text = [&](BiffFields &fields) {
        return m_globals.biff8 ? fields.unicodeString(2) : fields.byteString(2, m_globals.decoder);
    };

    BiffRecordStream records(m_stream, entry.offset);
    if (!records.next() || records.type() != BiffRecord::Bof)
        damaged(QStringLiteral("its records do not start where the workbook's list of sheets says"));
    int depth = 1;  // embedded charts nest their own BOF to EOF inside the sheet's
    int textRow = 0, textColumn = 0;  // a formula cell whose text follows in a STRING record
    while (depth > 0 && records.next()) {
        const quint16 type = records.type();
        const char *data = records.data();
        const int size = records.size();
        if (type == BiffRecord::Bof || type == BiffRecord::Eof) {
            depth += type == BiffRecord::Bof ? 1 : -1;
            continue;
        }
        if (depth > 1)
            continue;
        if (type == BiffRecord::String) {
            if (textRow > 0) {
                BiffFields fields(records);
                const QString value = text(fields);
                if (!fields.ok())
                    damaged(QStringLiteral("the text of the formula in row %1, column %2 is cut short").arg(textRow).arg(textColumn));
                sheet.setCell(textRow, textColumn, value);
                textRow = 0;
            }
            continue;
        }
        const int minimumSize = cellRecordSize(type);
        if (minimumSize == 0)
            continue;
        if (size < minimumSize)
            damaged(QStringLiteral("a cell record is cut short at byte %1 of the workbook stream").arg(records.offset()));
        const int row = u16(data) + 1;
        const int column = u16(data + 2) + 1;
        const quint16 xf = u16(data + 4);
        sheet.reachRow(row);
        switch (type) {
        case BiffRecord::Number:
            setNumber(row, column, xf, f64(data + 6));
            break;
        case BiffRecord::Rk:
            setNumber(row, column, xf, rkNumber(u32(data + 6)));
            break;
        case BiffRecord::MulRk:
            // Cells side by side in one row: a cell format and an RK number each, then the last column.
            for (int i = 0; i < (size - 6) / 6; ++i)
                setNumber(row, column + i, u16(data + 4 + 6 * i), rkNumber(u32(data + 6 + 6 * i)));
            break;
        case BiffRecord::LabelSst: {
            const quint32 item = u32(data + 6);
            if (item >= quint32(m_globals.sharedStrings.size()))
                damaged(QStringLiteral("the cell in row %1, column %2 refers to shared string %3, which does not exist")
                            .arg(row)
                            .arg(column)
                            .arg(item));
            sheet.setCell(row, column, m_globals.sharedStrings[qsizetype(item)]);
            break;
        }
        case BiffRecord::Label:
        case BiffRecord::RichString: {
            BiffFields fields(data + 6, size - 6);
            const QString value = text(fields);
            if (!fields.ok())
                damaged(QStringLiteral("the text in row %1, column %2 is cut short").arg(row).arg(column));
            sheet.setCell(row, column, value);
            break;
        }
        case BiffRecord::BoolErr:
            sheet.setCell(row, column, data[7] ? cellErrorText(quint8(data[6])) : data[6] ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
            break;
        case BiffRecord::Formula:
            textRow = 0;
            if (u16(data + 12) != 0xFFFF) {
                setNumber(row, column, xf, f64(data + 6));
            } else if (data[6] == FormulaText) {
                textRow = row;
                textColumn = column;
            } else if (data[6] == FormulaBoolean)
                sheet.setCell(row, column, data[8] ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
            else if (data[6] == FormulaError)
                sheet.setCell(row, column, cellErrorText(quint8(data[8])));
            break;
        default:
            break;
        }
    }
    if (records.cutShort())
        damaged(QStringLiteral("its last record is cut short by the end of the workbook stream"));
    return sheet.take();
}
