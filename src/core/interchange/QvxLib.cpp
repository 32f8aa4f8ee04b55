#include "core/interchange/QvxLib.h"

#include "core/interchange/QvxConvert.h"
#include "core/interchange/VtrFileReader.h"
#include "core/base/VantryError.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>

#include <cmath>

TQVXFile::TQVXFile() : CreateUtcTime(QDateTime::currentDateTime())
{
}

TQVXFile::~TQVXFile()
{
    CloseStreams();
}

void TQVXFile::SetFieldCount(int count)
{
    m_fields.clear();
    for (int i = 0; i < count; ++i)
        m_fields.push_back(std::make_unique<TQwField>());
}

void TQVXFile::SetAllDual(bool allDual)
{
    m_allDual = allDual;
    for (auto &field : m_fields)
        field->SetDualType(allDual);
}

// --- Reading ----------------------------------------------------------------------------------

void TQVXFile::ReadHeader()
{
    if (!QFile::exists(FileName))
        return;
    ParseHeader(std::make_unique<TvtrFileReader>(FileName, ReadBufferSize));
}

void TQVXFile::ReadHeader(QIODevice *device)
{
    ParseHeader(std::make_unique<TvtrFileReader>(device, ReadBufferSize));
}

void TQVXFile::ParseHeader(std::unique_ptr<TvtrFileReader> reader)
{
    m_reader = std::move(reader);
    TvtrFileReader &in = *m_reader;

    // The header is every byte before the first zero byte. Without one it is every byte but
    // the last, and an empty file is the read error.
    qint64 headerLength;
    if (in.Locate('\0'))
        headerLength = in.Position();
    else if (in.Size() > 0)
        headerLength = in.Size() - 1;
    else
        in.ReadError();
    in.Seek(0);
    const QString text = QString::fromUtf8(in.ReadBytes(headerLength));

    using QvxConvert::TakeElement;
    MajorVersion = TakeElement(text, u"MajorVersion");
    MinorVersion = TakeElement(text, u"MinorVersion");
    CreateUtcTime = QvxConvert::ParseHeaderDateTime(TakeElement(text, u"CreateUtcTime"));
    TableName = TakeElement(text, u"TableName");
    UsesSeparatorByte = QvxConvert::StrToBool(TakeElement(text, u"UsesSeparatorByte"));
    BlockSize = QvxConvert::StrToInt(TakeElement(text, u"BlockSize"));
    ParseFields(TakeElement(text, u"Fields"));

    // Records start just past the zero byte; zero-terminated strings are the reader's lines.
    in.Seek(headerLength + 1);
    in.SetLineTerminator(QString(QChar(0)));
}

void TQVXFile::ParseFields(const QString &fieldsText)
{
    // Field headers are told apart by the comma that replaces each closing tag, so a comma
    // inside a field header (a field name, a Fmt with a thousands comma) shifts the split and
    // every later field. Deliberate and must stay: other readers of these files split so too.
    QString pieces = fieldsText;
    pieces.remove(QStringLiteral("<QvxFieldHeader>"), Qt::CaseInsensitive);
    pieces.replace(QStringLiteral("</QvxFieldHeader>"), QStringLiteral(","), Qt::CaseInsensitive);

    // Every piece followed by a comma is one field; the piece after the last comma is not.
    // Fields are made one by one as their pieces are parsed, so that a header of many commas
    // and no field headers fails on its first piece instead of allocating a field per comma.
    m_fields.clear();
    qsizetype from = 0;
    for (qsizetype comma; (comma = pieces.indexOf(QLatin1Char(','), from)) >= 0; from = comma + 1)
    {
        m_fields.push_back(std::make_unique<TQwField>());
        m_fields.back()->SetAsString(pieces.mid(from, comma - from));
    }
}

bool TQVXFile::ReadRecord()
{
    if (!m_reader || m_reader->Eof())
        return false;
    const qint64 start = m_reader->Position();
    if (UsesSeparatorByte)
        m_reader->ReadByte(); // the record separator, not checked
    for (auto &field : m_fields)
        field->ReadField(*m_reader);
    // A record that reads no bytes would be read again and again without end.
    if (m_reader->Position() == start)
        throw VantryError(QStringLiteral("The records of \"%1\" take no bytes: its header "
                                         "declares no field that can be read")
                              .arg(m_reader->SourceName()));
    if (m_reader->Eof() || !UsesSeparatorByte)
        return true;
    return m_reader->PeekByte() != EndOfDataMark;
}

qint64 TQVXFile::SourceFilePosition() const
{
    if (!m_reader)
        return 0;
    const qint64 size = m_reader->Size();
    if (size <= 0)
        return 0;
    return std::llround(double(m_reader->Position()) / double(size) * 10000.0);
}

// --- Writing ----------------------------------------------------------------------------------

QString TQVXFile::HeaderText() const
{
    auto element = [](const char *name, const QString &value) {
        return QStringLiteral("<%1>%2</%1>\n").arg(QLatin1String(name), value);
    };
    QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n");
    // The one line that ends in CR LF. Deliberate and must stay: it is the header's exact form.
    text += QStringLiteral("<QvxTableHeader>\r\n");
    text += element("MajorVersion", MajorVersion);
    text += element("MinorVersion", MinorVersion);
    text += element("CreateUtcTime", QvxConvert::FormatHeaderDateTime(CreateUtcTime));
    // The table name goes out as it stands, markup characters included.
    text += element("TableName", TableName);
    text += element("UsesSeparatorByte", QvxConvert::BoolToStr(UsesSeparatorByte));
    text += element("BlockSize", QString::number(BlockSize));
    text += QStringLiteral("<Fields>\n");
    for (const auto &field : m_fields)
        text += field->AsString();
    text += QStringLiteral("</Fields>\n");
    text += QStringLiteral("</QvxTableHeader>\n");
    return text;
}

void TQVXFile::WriteHeader()
{
    CloseStreams();
    m_headerBuffer = std::make_unique<QBuffer>();
    m_headerBuffer->open(QIODevice::ReadWrite);
    m_headerBuffer->write(HeaderText().toUtf8());
    m_headerBuffer->putChar(char(HeaderTerminator));
    if (Streaming)
    {
        HandOutBlock();
        m_recordsSinceFlush = 0;
        return;
    }
    m_fileStream = std::make_unique<QFile>(FileName);
    if (!m_fileStream->open(QIODevice::WriteOnly | QIODevice::Truncate))
    {
        const QString reason = m_fileStream->errorString();
        CloseStreams();
        throw VantryError(QStringLiteral("Cannot create file \"%1\": %2").arg(FileName, reason));
    }
    m_fileStream->write(m_headerBuffer->data());
}

QIODevice &TQVXFile::Output()
{
    QIODevice *out = Streaming ? static_cast<QIODevice *>(m_headerBuffer.get())
                               : static_cast<QIODevice *>(m_fileStream.get());
    if (!out)
        throw VantryError(QStringLiteral("No QVX output is open: the header must be written first"));
    return *out;
}

void TQVXFile::HandOutBlock()
{
    if (!m_headerBuffer)
        return;
    if (OnWriteBlock)
        OnWriteBlock(*this, m_headerBuffer->data());
    m_headerBuffer->buffer().clear();
    m_headerBuffer->seek(0);
}

void TQVXFile::WriteRecord()
{
    QIODevice &out = Output();
    // Streamed records never carry the separator, whatever UsesSeparatorByte says.
    if (!Streaming && UsesSeparatorByte)
        out.putChar(char(RecordSeparator));
    for (auto &field : m_fields)
        field->WriteField(out);
    ++m_recordsSinceFlush;
    // The count is not reset at a hand-out: blocks follow every 2048th record.
    if (Streaming && m_recordsSinceFlush % StreamBlockRecords == 0)
        HandOutBlock();
}

void TQVXFile::FinishWriting()
{
    QString failure;
    if (Streaming)
    {
        HandOutBlock();
    }
    else if (m_fileStream)
    {
        if (UsesSeparatorByte)
            m_fileStream->putChar(char(EndOfDataMark));
        if (!m_fileStream->flush() || m_fileStream->error() != QFileDevice::NoError)
            failure = QStringLiteral("Cannot write file \"%1\": %2")
                          .arg(FileName, m_fileStream->errorString());
    }
    CloseStreams();
    if (!failure.isEmpty())
        throw VantryError(failure);
}

void TQVXFile::CloseStreams()
{
    m_headerBuffer.reset();
    if (m_fileStream)
        m_fileStream->close();
    m_reader.reset();
    m_fileStream.reset();
}

QStringList qvxTablesList(const QString &fileName)
{
    // A file that is missing or may not be opened lists one table with an empty name, as its
    // header read leaves TableName empty; a header that does not parse still raises.
    if (!QFileInfo(fileName).isReadable())
        return {QString()};
    TQVXFile file;
    file.FileName = fileName;
    file.ReadHeader();
    return {file.TableName};
}
