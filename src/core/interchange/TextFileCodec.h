#pragma once
#include <QByteArray>
#include <QString>

// The bytes of a text file as the editor reads and writes them. A file is read as UTF-8 when it
// is valid UTF-8 and as Latin-1 otherwise, so any file opens; a save writes the encoding the file
// was read in as long as every character of the text fits it, and UTF-8 when one does not.
namespace TextFileCodec {

enum class Encoding { Utf8, Latin1 };

struct Decoded
{
    QByteArray utf8;  // the text, always UTF-8 (what the editor control takes)
    Encoding encoding = Encoding::Utf8;
};

Decoded decode(const QByteArray &bytes);
QByteArray encode(const QString &text, Encoding preferred);

// Reads and writes whole files; a failure raises VantryError naming the file and the cause. A
// failed write leaves the old file as it was.
Decoded readFile(const QString &fileName);
void writeFile(const QString &fileName, const QString &text, Encoding preferred);

} // namespace TextFileCodec
