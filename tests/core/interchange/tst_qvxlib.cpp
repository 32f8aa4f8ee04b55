// QVX files: the header's exact bytes, files written and read back field by field, hand-made
// records of every field kind, streaming blocks, and the errors of missing, malformed,
// truncated and hostile files.

#include "core/base/VantryError.h"
#include "core/interchange/QvxLib.h"

#include "ErrorOf.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <cstring>

namespace {

QByteArray FileBytes(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(name));
    return file.readAll();
}

void WriteBytes(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(name));
}

struct FieldLayout
{
    TQvxFieldType type;
    TQvxFieldExtent extent;
    int width;
};

// A file object with one field per layout, named f0, f1, ...
void SetFields(TQVXFile &file, const QList<FieldLayout> &layouts)
{
    file.SetFieldCount(int(layouts.size()));
    for (int i = 0; i < layouts.size(); ++i)
    {
        TQwField &field = file.Field(i);
        field.FieldName = QStringLiteral("f%1").arg(i);
        field.Type = layouts[i].type;
        field.Extent = layouts[i].extent;
        field.ByteWidth = layouts[i].width;
    }
}

QByteArray WrittenBytes(TQwField &field)
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    field.WriteField(out);
    return out.data();
}

// The error that reading the file's records to the end gives, or an empty text.
QString ReadError(TQVXFile &file)
{
    return errorOf([&] {
        while (file.ReadRecord())
        {
        }
    });
}

} // namespace

Q_DECLARE_METATYPE(TQvxFieldType)
Q_DECLARE_METATYPE(TQvxFieldExtent)
Q_DECLARE_METATYPE(TQvxNullRepresentation)
Q_DECLARE_METATYPE(TQvxFieldFormatType)

class TestQvxLib : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_files = 0;

    QString NewName() { return m_dir.filePath(QStringLiteral("t%1.qvx").arg(++m_files)); }

private slots:
    void headerExactBytes()
    {
        TQVXFile file;
        file.FileName = NewName();
        file.CreateUtcTime = QDateTime(QDate(2024, 3, 5), QTime(7, 8, 9));
        file.TableName = QStringLiteral("T<1>&");
        file.SetFieldCount(1);
        file.Field(0).FieldName = QStringLiteral("Name");
        file.WriteHeader();
        file.Field(0).AssignValue(QStringLiteral("ab"));
        file.WriteRecord();
        file.FinishWriting();

        const QByteArray expected =
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
            "<QvxTableHeader>\r\n"
            "<MajorVersion>1</MajorVersion>\n"
            "<MinorVersion>0</MinorVersion>\n"
            "<CreateUtcTime>2024-03-05 07:08:09</CreateUtcTime>\n"
            "<TableName>T<1>&</TableName>\n"
            "<UsesSeparatorByte>true</UsesSeparatorByte>\n"
            "<BlockSize>0</BlockSize>\n"
            "<Fields>\n"
            "<QvxFieldHeader>\n"
            "<FieldName>Name</FieldName>\n"
            "<Type>QVX_TEXT</Type>\n"
            "<Extent>QVX_COUNTED</Extent>\n"
            "<NullRepresentation>QVX_NULL_NEVER</NullRepresentation>\n"
            "<LittleEndian>false</LittleEndian>\n"
            "<CodePage>65001</CodePage>\n"
            "<ByteWidth>2</ByteWidth>\n"
            "<FixPointDecimals>0</FixPointDecimals>\n"
            "<FieldFormat>\n"
            "<Type>UNKNOWN</Type>\n"
            "<nDec>0</nDec>\n"
            "<UseThou>0</UseThou>\n"
            "<Fmt></Fmt>\n"
            "<Dec></Dec>\n"
            "<Thou></Thou>\n"
            "</FieldFormat>\n"
            "<BigEndian>false</BigEndian>\n"
            "</QvxFieldHeader>\n"
            "</Fields>\n"
            "</QvxTableHeader>\n";
        QCOMPARE(FileBytes(file.FileName),
                 expected + QByteArray("\0\x1E\x02\0ab\x1C", 7));
    }

    void headerValuesReadBack()
    {
        TQVXFile written;
        written.FileName = NewName();
        written.CreateUtcTime = QDateTime(QDate(1999, 12, 31), QTime(23, 59, 58));
        written.TableName = QStringLiteral("Orders");
        written.MajorVersion = QStringLiteral("2");
        written.BlockSize = 77;
        written.UsesSeparatorByte = false;
        written.SetFieldCount(2);
        TQwField &field = written.Field(1);
        field.FieldName = QStringLiteral("Amount");
        field.Type = TQvxFieldType::QVX_IEEE_REAL;
        field.Extent = TQvxFieldExtent::QVX_FIX;
        field.NullRepresentation = TQvxNullRepresentation::QVX_NULL_FLAG_SUPPRESS_DATA;
        field.ByteWidth = 8;
        field.CodePage = 1252;
        field.FixPointDecimals = 3;
        field.LittleEndian = true;
        field.FormatType = TQvxFieldFormatType::MONEY;
        field.nDec = 2;
        field.UseThou = 1;
        field.Fmt = QStringLiteral("#0.00");
        field.Dec = QStringLiteral(".");
        written.WriteHeader();
        written.FinishWriting();

        TQVXFile read;
        read.FileName = written.FileName;
        read.ReadHeader();
        QCOMPARE(read.MajorVersion, QStringLiteral("2"));
        QCOMPARE(read.CreateUtcTime, written.CreateUtcTime);
        QCOMPARE(read.TableName, QStringLiteral("Orders"));
        QCOMPARE(read.UsesSeparatorByte, false);
        QCOMPARE(read.BlockSize, 77);
        QCOMPARE(read.FieldCount(), 2);
        QCOMPARE(read.Field(1).AsString(), field.AsString());
        QCOMPARE(read.Field(0).AsString(), TQwField().AsString());
        QCOMPARE(qvxTablesList(read.FileName), QStringList{QStringLiteral("Orders")});
    }

    void intervalIsWrittenEmptyAndParsed()
    {
        TQwField field;
        field.FormatType = TQvxFieldFormatType::INTERVAL;
        QVERIFY(field.AsString().contains("<FieldFormat>\n<Type></Type>"));
        TQwField parsed;
        parsed.SetAsString(field.AsString().replace("<FieldFormat>\n<Type></Type>",
                                                    "<FieldFormat>\n<Type>INTERVAL</Type>"));
        QCOMPARE(parsed.FormatType, TQvxFieldFormatType::INTERVAL);
        QCOMPARE(parsed.Type, TQvxFieldType::QVX_TEXT); // the format's Type is not the field's
    }

    // Text, dual and slot-layout columns written and read back value by value.
    void writtenFileReadBack_data()
    {
        QTest::addColumn<bool>("separators");
        QTest::newRow("with separator bytes") << true;
        QTest::newRow("UsesSeparatorByte false") << false;
    }
    void writtenFileReadBack()
    {
        QFETCH(bool, separators);
        const QList<FieldLayout> layouts = {
            {TQvxFieldType::QVX_TEXT, TQvxFieldExtent::QVX_COUNTED, 1},
            {TQvxFieldType::QVX_TEXT, TQvxFieldExtent::QVX_COUNTED, 2},
            {TQvxFieldType::QVX_SIGNED_INTEGER, TQvxFieldExtent::QVX_FIX, 4},
            {TQvxFieldType::QVX_TEXT, TQvxFieldExtent::QVX_COUNTED, 4},
            {TQvxFieldType::QVX_PACKED_BCD, TQvxFieldExtent::QVX_FIX, 0},
            {TQvxFieldType::QVX_TEXT, TQvxFieldExtent::QVX_ZERO_TERMINATED, 1},
            {TQvxFieldType::QVX_QV_DUAL, TQvxFieldExtent::QVX_QV_SPECIAL, 0},
        };
        const QList<QVariantList> rows = {
            {"h\u00e9llo", "", 12345, "four", 1, "zero", 42.5},
            {"", "two bytes", -7, QString(300, 'w'), 2, "", QDate(2012, 5, 1)},
            {"x", "y", 0, "z", 3, "\u20ac", "plain"},
        };
        const QStringList dualTexts = {"42.5", "2012-05-01", "plain"};

        TQVXFile written;
        written.FileName = NewName();
        written.UsesSeparatorByte = separators;
        SetFields(written, layouts);
        written.WriteHeader();
        for (const QVariantList &row : rows)
        {
            for (int i = 0; i < row.size(); ++i)
                QVERIFY(written.Field(i).AssignValue(row[i]));
            written.WriteRecord();
        }
        written.FinishWriting();

        TQVXFile read;
        read.FileName = written.FileName;
        read.ReadHeader();
        QCOMPARE(read.FieldCount(), layouts.size());
        QCOMPARE(read.UsesSeparatorByte, separators);
        for (int r = 0; r < rows.size(); ++r)
        {
            const bool more = read.ReadRecord();
            // The call that reads the last record says to stop; without separator bytes only
            // the end of the file does.
            QCOMPARE(more, !separators || r + 1 < rows.size());
            for (int i : {0, 1, 3, 5})
                QCOMPARE(read.Field(i).Value().toString(), rows[r][i].toString());
            QCOMPARE(read.Field(6).Value().toString(), dualTexts[r]);
        }
        if (!separators)
        {
            QVERIFY(!read.ReadRecord()); // end of file
            QCOMPARE(read.SourceFilePosition(), 10000);
        }
        QVERIFY(read.SourceFilePosition() > 9900);
    }

    void dualWritesItsMarkers_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QByteArray>("expected");
        auto number = [](double value) {
            QByteArray bytes(8, '\0');
            qToLittleEndian(value, bytes.data());
            return bytes;
        };
        QTest::newRow("null") << QVariant() << QByteArray("\x04");
        QTest::newRow("number") << QVariant(2.5) << QByteArray("\x06") + number(2.5) + "2.5" + '\0';
        QTest::newRow("integer") << QVariant(7) << QByteArray("\x06") + number(7) + "7" + '\0';
        QTest::newRow("text") << QVariant("ab") << QByteArray("\x04" "ab") + '\0';
        QTest::newRow("empty text") << QVariant("") << QByteArray("\x04") + '\0';
        // Seconds divided by milliseconds per day: a date lands near 25569.
        const QDateTime date(QDate(2012, 6, 1), QTime(12, 0));
        const double seconds = double(QDate(1970, 1, 1).daysTo(date.date()) * 86400 + 12 * 3600);
        QTest::newRow("date of 2012")
            << QVariant(date)
            << QByteArray("\x06") + number(seconds / 86400000.0 + 25569) +
                   QVariant(date).toString().toUtf8() + '\0';
        QTest::newRow("date before 1970")
            << QVariant(QDate(1969, 12, 31))
            << QByteArray("\x06") + number(25569 - 86400 / 86400000.0) + "1969-12-31" + '\0';
    }
    void dualWritesItsMarkers()
    {
        QFETCH(QVariant, value);
        QFETCH(QByteArray, expected);
        TQwField field;
        field.SetDualType(true);
        field.AssignValue(value);
        QCOMPARE(WrittenBytes(field), expected);
    }

    void countedPrefixes_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("nullRepresentation");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("1") << 1 << 0 << QByteArray("\x03" "abc");
        QTest::newRow("2") << 2 << 0 << QByteArray("\x03\0abc", 5);
        QTest::newRow("4") << 4 << 0 << QByteArray("\x03\0\0\0abc", 7);
        // The 8-byte prefix is the slot that is never filled: it carries no length.
        QTest::newRow("8 carries no length") << 8 << 0 << QByteArray("\0\0\0\0\0\0\0\0abc", 11);
        QTest::newRow("3 has no prefix") << 3 << 0 << QByteArray("abc");
        // The null flag is the 1-byte length slot.
        QTest::newRow("null flag is the length") << 1 << 2 << QByteArray("\x03\x03" "abc");
    }
    void countedPrefixes()
    {
        QFETCH(int, width);
        QFETCH(int, nullRepresentation);
        QFETCH(QByteArray, expected);
        TQwField field;
        field.ByteWidth = width;
        field.NullRepresentation = TQvxNullRepresentation(nullRepresentation);
        field.AssignValue(QStringLiteral("abc"));
        QCOMPARE(WrittenBytes(field), expected);
    }

    // Hand-made records: one field of the kind under test, then a zero-terminated "end" that
    // shows the field consumed exactly its bytes.
    void readFieldKinds_data()
    {
        QTest::addColumn<TQvxFieldType>("type");
        QTest::addColumn<TQvxFieldExtent>("extent");
        QTest::addColumn<TQvxNullRepresentation>("nulls");
        QTest::addColumn<TQvxFieldFormatType>("format");
        QTest::addColumn<int>("width");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QVariant>("expected");
        const auto S = TQvxFieldType::QVX_SIGNED_INTEGER, U = TQvxFieldType::QVX_UNSIGNED_INTEGER,
                   R = TQvxFieldType::QVX_IEEE_REAL, T = TQvxFieldType::QVX_TEXT,
                   D = TQvxFieldType::QVX_QV_DUAL;
        const auto fix = TQvxFieldExtent::QVX_FIX, counted = TQvxFieldExtent::QVX_COUNTED;
        const auto never = TQvxNullRepresentation::QVX_NULL_NEVER;
        const auto flag = TQvxNullRepresentation::QVX_NULL_FLAG_SUPPRESS_DATA;
        const auto unknown = TQvxFieldFormatType::UNKNOWN;
        QTest::newRow("signed 1") << S << fix << never << unknown << 1 << QByteArray("\xFF")
                                  << QVariant::fromValue(qint16(-1));
        QTest::newRow("signed 2") << S << fix << never << unknown << 2 << QByteArray("\x34\x12")
                                  << QVariant::fromValue(qint16(0x1234));
        QTest::newRow("signed 4") << S << fix << never << unknown << 4
                                  << QByteArray("\xFE\xFF\xFF\xFF") << QVariant::fromValue(-2);
        QTest::newRow("signed 8") << S << fix << never << unknown << 8
                                  << QByteArray("\x01\0\0\0\0\0\0\x80", 8)
                                  << QVariant::fromValue(qint64(0x8000000000000001ULL));
        QTest::newRow("unsigned 1") << U << fix << never << unknown << 1 << QByteArray("\xFF")
                                    << QVariant::fromValue(quint16(255));
        QTest::newRow("unsigned 2") << U << fix << never << unknown << 2 << QByteArray("\xFF\xFF")
                                    << QVariant::fromValue(quint16(65535));
        QTest::newRow("unsigned 4") << U << fix << never << unknown << 4
                                    << QByteArray("\xFF\xFF\xFF\xFF")
                                    << QVariant::fromValue(quint32(0xFFFFFFFF));
        QTest::newRow("unsigned 8") << U << fix << never << unknown << 8
                                    << QByteArray("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF")
                                    << QVariant::fromValue(quint64(~0ULL));
        QTest::newRow("unsigned 3 reads nothing") << U << fix << never << unknown << 3
                                                  << QByteArray() << QVariant();
        QTest::newRow("real 4") << R << fix << never << unknown << 4
                                << QByteArray("\0\0\xC0\x3F", 4) << QVariant(1.5);
        QTest::newRow("real 8") << R << fix << never << unknown << 8
                                << QByteArray("\0\0\0\0\0\0\x02\x40", 8) << QVariant(2.25);
        QTest::newRow("packed BCD")
            << TQvxFieldType::QVX_PACKED_BCD << fix << never << unknown << 0
            << QByteArray("\x05\x82\x12\x34\x50", 5) + QByteArray(29, '\0') << QVariant("-123.45");
        QTest::newRow("blob reads nothing") << TQvxFieldType::QVX_BLOB << fix << never << unknown
                                            << 4 << QByteArray() << QVariant();
        QTest::newRow("text fix is empty") << T << fix << never << unknown << 2 << QByteArray()
                                           << QVariant("");
        QTest::newRow("text counted 3 is empty")
            << T << counted << never << unknown << 3 << QByteArray() << QVariant("");
        QTest::newRow("text counted 8") << T << counted << never << unknown << 8
                                        << QByteArray("\x02\0\0\0\0\0\0\0hi", 10) << QVariant("hi");
        QTest::newRow("null flag 1 is empty text")
            << T << counted << flag << unknown << 1 << QByteArray("\x00\x01", 2) << QVariant("");
        QTest::newRow("null flag 0 reads the text")
            << T << counted << flag << unknown << 1 << QByteArray("\x02\x00hi", 4) << QVariant("hi");
        QTest::newRow("dual marker 0") << D << fix << never << unknown << 0 << QByteArray("\0", 1)
                                       << QVariant("");
        QTest::newRow("dual number") << D << fix << never << unknown << 0
                                     << QByteArray("\x02\0\0\0\0\0\0\x02\x40", 9) << QVariant(2.25);
        QTest::newRow("dual date") << D << fix << never << TQvxFieldFormatType::DATE << 0
                                   << QByteArray("\x02\0\0\0\0\x60\xF8\xD8\x40", 9)
                                   << QVariant(QDateTime(QDate(1970, 1, 1), QTime(12, 0)));
        QTest::newRow("dual text wins over number")
            << D << fix << never << unknown << 0 << QByteArray("\x06\x01\x02\x03\x04\x05\x06\x07\x08txt\0", 13)
            << QVariant("txt");
        QTest::newRow("dual text only") << D << fix << never << unknown << 0
                                        << QByteArray("\x04\xC3\xA9\0", 4) << QVariant("\u00e9");
    }
    void readFieldKinds()
    {
        QFETCH(TQvxFieldType, type);
        QFETCH(TQvxFieldExtent, extent);
        QFETCH(TQvxNullRepresentation, nulls);
        QFETCH(TQvxFieldFormatType, format);
        QFETCH(int, width);
        QFETCH(QByteArray, bytes);
        QFETCH(QVariant, expected);

        TQVXFile header;
        SetFields(header, {{type, extent, width},
                           {TQvxFieldType::QVX_TEXT, TQvxFieldExtent::QVX_ZERO_TERMINATED, 1}});
        header.Field(0).NullRepresentation = nulls;
        header.Field(0).FormatType = format;
        QBuffer device;
        device.setData(header.HeaderText().toUtf8() + '\0' + '\x1E' + bytes + "end" + '\0' +
                       '\x1C');
        device.open(QIODevice::ReadOnly);

        TQVXFile file;
        file.ReadHeader(&device);
        QVERIFY(!file.ReadRecord()); // the one record is the last
        const QVariant value = file.Field(0).Value();
        QCOMPARE(value.typeId(), expected.typeId());
        QCOMPARE(value, expected);
        QCOMPARE(file.Field(1).Value().toString(), QStringLiteral("end"));
    }

    void streamingBlocks()
    {
        TQVXFile file;
        file.Streaming = true;
        file.SetFieldCount(1);
        QList<QByteArray> blocks;
        file.OnWriteBlock = [&](TQVXFile &, const QByteArray &block) { blocks.append(block); };
        file.WriteHeader();
        for (int i = 0; i < 5000; ++i)
        {
            file.Field(0).AssignValue(QStringLiteral("x"));
            file.WriteRecord();
        }
        file.FinishWriting();
        // The header, two full blocks of 2048 records, the rest; no separators, no end mark.
        QCOMPARE(blocks.size(), 4);
        QCOMPARE(blocks[0], file.HeaderText().toUtf8() + '\0');
        const QByteArray record("\x01\0x", 3);
        QCOMPARE(blocks[1], record.repeated(2048));
        QCOMPARE(blocks[2], record.repeated(2048));
        QCOMPARE(blocks[3], record.repeated(5000 - 4096));
    }

    void missingFile()
    {
        TQVXFile file;
        file.FileName = m_dir.filePath("missing.qvx");
        file.ReadHeader();
        QCOMPARE(file.FieldCount(), 0);
        QVERIFY(file.TableName.isEmpty());
        QVERIFY(!file.ReadRecord());
        QCOMPARE(qvxTablesList(file.FileName), QStringList{QString()});
    }

    void unreadableFileListsAnEmptyName()
    {
        const QString name = m_dir.filePath("locked.qvx");
        QFile locked(name);
        QVERIFY(locked.open(QIODevice::WriteOnly));
        locked.write(QByteArray("<QvxTableHeader><TableName>T</TableName></QvxTableHeader>"));
        locked.close();
        QVERIFY(locked.setPermissions(QFileDevice::WriteOwner));
        if (QFileInfo(name).isReadable())
            QSKIP("running with rights that read any file");
        QCOMPARE(qvxTablesList(name), QStringList{QString()});
    }

    // Headers that fail: the conversion error names the text that did not convert.
    void malformedHeaders_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("error");
        QTest::newRow("missing BlockSize") << "<BlockSize>0</BlockSize>" << ""
                                           << "'' is not a valid integer value";
        QTest::newRow("bad CodePage") << "<CodePage>65001</CodePage>" << "<CodePage>x1</CodePage>"
                                      << "'x1' is not a valid integer value";
        QTest::newRow("bad boolean") << "<UsesSeparatorByte>true<" << "<UsesSeparatorByte>yes<"
                                     << "'yes' is not a valid boolean value";
        // A comma inside a field header shifts the split; the first piece then lacks elements.
        QTest::newRow("comma in a field name") << "<FieldName>f0</FieldName>"
                                               << "<FieldName>a,b</FieldName>"
                                               << "is not a valid";
    }
    void malformedHeaders()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, error);
        TQVXFile header;
        SetFields(header, {{TQvxFieldType::QVX_TEXT, TQvxFieldExtent::QVX_COUNTED, 2}});
        QString text = header.HeaderText();
        QVERIFY(text.contains(from));
        const QString name = NewName();
        WriteBytes(name, text.replace(from, to).toUtf8() + '\0');
        TQVXFile file;
        file.FileName = name;
        const QString message = errorOf([&] { file.ReadHeader(); });
        QVERIFY2(message.contains(error), qPrintable(message));
    }

    void separatorsAndOddHeaders()
    {
        // Unknown enumeration texts keep the defaults; a file with no zero byte loses its last
        // byte to the header.
        TQwField field;
        field.SetAsString(field.AsString().replace("QVX_COUNTED", "qvx_counted")
                              .replace("QVX_TEXT", "QVX_BOGUS"));
        QCOMPARE(field.Extent, TQvxFieldExtent::QVX_COUNTED);
        QCOMPARE(field.Type, TQvxFieldType::QVX_TEXT);

        TQVXFile header;
        header.TableName = QStringLiteral("NoZero");
        QBuffer device;
        device.setData(header.HeaderText().toUtf8());
        device.open(QIODevice::ReadOnly);
        TQVXFile file;
        file.ReadHeader(&device);
        QCOMPARE(file.TableName, QStringLiteral("NoZero"));
        QVERIFY(!file.ReadRecord());

        QBuffer empty;
        empty.open(QIODevice::ReadOnly);
        QVERIFY_THROWS_EXCEPTION(VantryError, file.ReadHeader(&empty));
    }

    // Truncated and hostile records give the reader's error, never a crash, a hang or a giant
    // allocation; nor does a record of no bytes without separators make the reader spin.
    void brokenRecords_data()
    {
        QTest::addColumn<TQvxFieldType>("type");
        QTest::addColumn<int>("width");
        QTest::addColumn<QByteArray>("record");
        QTest::addColumn<QString>("error");
        const auto T = TQvxFieldType::QVX_TEXT;
        const QString cut = QStringLiteral("Unexpected end of file");
        QTest::newRow("text cut short") << T << 2 << QByteArray("\x1E\x05\0ab", 5) << cut;
        QTest::newRow("prefix cut short") << T << 4 << QByteArray("\x1E\x05", 2) << cut;
        QTest::newRow("4 GiB length") << T << 4 << QByteArray("\x1E\xF0\xFF\xFF\xFF" "ab", 7) << cut;
        QTest::newRow("huge 8-byte length") << T << 8 << QByteArray("\x1E\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 9) << cut;
        QTest::newRow("records of no bytes") << TQvxFieldType::QVX_BLOB << 4 << QByteArray("data") << "take no bytes";
    }
    void brokenRecords()
    {
        QFETCH(TQvxFieldType, type);
        QFETCH(int, width);
        QFETCH(QByteArray, record);
        QFETCH(QString, error);
        TQVXFile header;
        const bool counted = type == TQvxFieldType::QVX_TEXT;
        header.UsesSeparatorByte = counted;
        SetFields(header, {{type, counted ? TQvxFieldExtent::QVX_COUNTED : TQvxFieldExtent::QVX_FIX, width}});
        QBuffer device;
        device.setData(header.HeaderText().toUtf8() + '\0' + record);
        device.open(QIODevice::ReadOnly);
        TQVXFile file;
        file.ReadHeader(&device);
        QVERIFY(ReadError(file).contains(error));
    }

    void assignValueConversions()
    {
        TQwField field;
        field.Type = TQvxFieldType::QVX_SIGNED_INTEGER;
        field.ByteWidth = 4;
        QVERIFY(field.AssignValue(QStringLiteral("12")));
        QVERIFY_THROWS_EXCEPTION(VantryError, field.AssignValue(QStringLiteral("abc")));
        QVERIFY_THROWS_EXCEPTION(VantryError, field.AssignValue(QVariant()));
        field.Type = TQvxFieldType::QVX_IEEE_REAL;
        field.ByteWidth = 3; // no slot for this width: nothing is converted
        QVERIFY(field.AssignValue(QStringLiteral("abc")));
        field.Type = TQvxFieldType::QVX_TEXT;
        QVERIFY(field.AssignValue(QVariant()));
        QCOMPARE(field.TextBytes(), QByteArray());
    }

    void cannotCreateFile()
    {
        TQVXFile file;
        file.FileName = m_dir.filePath("no/such/folder/x.qvx");
        QVERIFY_THROWS_EXCEPTION(VantryError, file.WriteHeader());
        QVERIFY_THROWS_EXCEPTION(VantryError, file.WriteRecord());
    }
};

QTEST_GUILESS_MAIN(TestQvxLib)
#include "tst_qvxlib.moc"
