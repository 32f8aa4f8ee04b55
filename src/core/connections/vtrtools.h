#pragma once
// The stored form of a connection record.
//
// A TReaderConnection is stored as its parameter text: "OP=" followed by 61 comma-separated
// values, item 0 to item 60 (see the position comments in vtrIL.h). The text is compressed with
// bzip2 into the catalogue column CONNECTION_PARAMETERS. Everything here works on plain strings
// and bytes, so it can be tested and fuzzed without a database.

#include "core/connections/vtrIL.h"

#include <QByteArray>
#include <QString>

// Number of values in the parameter text.
constexpr int kParameterItemCount = 61;

// Replaces the eleven control characters, backslash and comma by a backslash and a letter, so
// that a value never holds a comma or a line break. Note: carriage return becomes "\n" and line
// feed becomes "\l" -- the reverse of the usual convention. That is deliberate and must stay,
// or stored connections no longer read back.
QString EscapeParamValue(const QString &value);

// The inverse of EscapeParamValue. A backslash followed by any other character, and a backslash
// at the very end, are kept as written.
QString UnescapeParamValue(const QString &value);

// The record as parameter text: "OP=" and the 61 values, each followed by a comma except the last.
// Integers and enumerations are written in decimal, booleans as "-1" or "0", strings escaped.
// The run-time fields (SourceFileCreationDate ... LastRecordFile) are not written.
QString ReaderConnectionToStr(const TReaderConnection &rc);

// Reads a parameter text into rc.
//  - A leading "OP=" (exact case) is dropped; a text without it reads the same.
//  - Before any item is read, ReadAllTables and ReadAllData become true and RejectedFile the
//    quoted default file in the data folder.
//  - Items are read in order; when they run out, reading stops quietly and the remaining fields
//    keep what rc held. Extra items behind item 60 are ignored.
//  - Afterwards an empty LineTerminator becomes "{CR}+{LF}".
//  - Numbers are decimal digits with an optional sign and must fit their field (an enumeration
//    must name one of its members).
//  - Booleans: "-1" and "0", "True" and "False" in any case; any other whole number counts as true
//    when not zero. Any other word (including an empty item) is an error, as for numbers.
//  - Items 54 (UseUnicode) and 55 (Compress) are true only when they are exactly "-1"; any other
//    text, "True" included, reads as false and is never an error.
// An item that cannot be read throws VantryError naming the item's position, its field, its text
// and what was expected; the fields read before it stay set in rc.
void StrToReaderConnection(const QString &text, TReaderConnection &rc);

// Convenience: reads the text into a fresh record.
TReaderConnection ReaderConnectionFromStr(const QString &text);

// The default rejected-records file: a double quote, the data folder, "/Rejected Records File.tab"
// and a closing double quote (the quotes are part of the value).
QString DefaultRejectedFile();

// The parameter text as stored in CONNECTION_PARAMETERS: UTF-8, compressed as one bzip2 stream
// with block size 5. An empty text is stored as an empty value (which reads back as empty).
QByteArray PackParameters(const QString &text);

// The parameter text of a CONNECTION_PARAMETERS value. An empty value gives the empty text. The
// bytes are decompressed as bzip2 (one or more concatenated streams) and read as UTF-8; when they
// don't decompress -- not bzip2, damaged, truncated, or larger than kMaxUnpackedParameterBytes --
// or decompress to nothing, the value itself is read as UTF-8 text, so uncompressed values still read.
QString UnpackParameters(const QByteArray &column);

// A parameter text is a few hundred bytes; anything that unpacks beyond this is not one of ours
// (and might be a decompression bomb), so it is treated as not compressed.
constexpr qsizetype kMaxUnpackedParameterBytes = 32 * 1024 * 1024;

// Replaces every "<CommonDocumentsDir>" (exact case) by the shared documents folder.
QString ExpandPathMacros(const QString &text);

// Applies ExpandPathMacros to the fields a workspace expands when it opens a stored connection:
// SourceFile, Directory, Server, DataBase, UserName, Password and SelectStatement.
void ExpandConnectionPathMacros(TReaderConnection &rc);
