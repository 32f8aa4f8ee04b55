#pragma once
// The connection and data-source record and the small enumerations it is made of.
//
// One TReaderConnection describes a data source: a stored connection of the catalogue, the
// connection a workspace tab opens, or a source of the import side. Its text form (the "OP="
// parameter text) lives in vtrtools.h. The ordinals of every enumeration below are written into
// that stored text, so the order of their members is part of the stored format and must never
// change; new members may only be appended.

#include <QString>
#include <QtGlobal>

// Kind of data source. Stored by ordinal (0..27) in the parameter text.
enum TDataSourceType : quint8 {
    dsNone,         // 0
    dsText,         // 1
    dsODBC,         // 2
    dsDbf,          // 3
    dsAccess,       // 4
    dsExcel,        // 5
    dsSqlServer,    // 6
    dsOracle,       // 7
    dsEntered,      // 8
    dsMySql,        // 9
    dsPostgreSQL,   // 10
    dsInterbase,    // 11
    dsOleDb,        // 12
    dssInsert,      // 13
    dsFileSystem,   // 14
    dsEmail,        // 15
    dsSqLite,       // 16
    dsXML,          // 17
    dsSqlServerCE,  // 18
    dsImap,         // 19
    dsSocket,       // 20
    dsDB2,          // 21
    dsSybaseASE,    // 22
    dsSybaseADS,    // 23
    dsFTP,          // 24
    dsSMTP,         // 25
    dsPOP3,         // 26
    dsQVX           // 27
};
constexpr int kDataSourceTypeCount = 28;

// Text encoding of file sources.
enum TVtrFileEncoding : quint8 {
    ftAuto,
    ftAnsi,
    ftUTF8,
    ftUTF16LSB,
    ftUTF16MSB,
    ftUTF32LSB,
    ftUTF32MSB
};

enum TExcelVersion : quint8 { Excel, Excel2007 };

enum TAccessVersion : quint8 { Access, Access2007 };

enum TXMLTransformationType : quint8 { xttNone, xttXSLT, xttXQUERY };

// Oracle privilege of a session.
enum ToraConnectAs : quint8 { ocaNormal, ocaSYSDBA, ocaSYSOPER };

// The record. Fields keep their declaration order; the comment behind each field gives its
// position in the parameter text ("-": run-time only, never stored). The 8-bit strings of the
// stored format are held as QString; the parameter text is UTF-8 once packed.
// Every field defaults to empty, zero, false or the first enumeration member: that is the
// state a freshly built record of the connection dialog starts from.
struct TReaderConnection
{
    QString Description;                                    // 20 connection name
    qint32 ConnectionID = 0;                                // 21
    TDataSourceType ConnectionType = dsNone;                // 0
    bool UseTablesMask = false;                             // 1
    QString TablesMask;                                     // 2
    bool UseFilesMask = false;                              // 22
    QString FilesMask;                                      // 23
    QString SourceFile;                                     // 3 file of a file database or file source
    QString Directory;                                      // 4 folder of file sources
    bool SearchInSubdirectories = false;                    // 47
    TVtrFileEncoding FileEncoding = ftAuto;                 // 37
    bool Delimited = false;                                 // 5
    QString Delimiter;                                      // 6
    QString LineTerminator;                                 // 30 "{CR}+{LF}" when read back empty
    QString Quote;                                          // 7
    quint32 HeaderLines = 0;                                // 8
    quint32 FooterLines = 0;                                // 9
    QString OdbcDsnName;                                    // 10 (8-bit)
    QString Server;                                         // 11 (8-bit) server, host, TNS name, DSN or OLE DB string
    QString DataBase;                                       // 12 (8-bit) database name or file
    QString UserName;                                       // 13 (8-bit)
    QString Password;                                       // 14 (8-bit) kept as typed
    bool IsTable = false;                                   // 15
    QString Table;                                          // 16 (8-bit)
    QString Tables;                                         // 17 (8-bit)
    QString SelectStatement;                                // 18 (8-bit)
    bool ShowSystemTables = false;                          // 19
    bool DisableBulkFetch = false;                          // 36
    bool CrossTable = false;                                // 24
    quint32 FirstField = 0;                                 // 25
    quint32 Blocks = 0;                                     // 26
    quint32 BlockLength = 0;                                // 27
    QString RejectedFile;                                   // 43 file for rejected records
    QString RDelimiter;                                     // 28
    QString RQuote;                                         // 29
    TExcelVersion ExcelVersion = Excel;                     // 31
    TAccessVersion AccessVersion = Access;                  // 32
    QString SQL_SEPARATOR;                                  // 33
    QString SqlBefore;                                      // 34
    QString SqlAfter;                                       // 35
    qint32 Port = 0;                                        // 38 TCP port
    bool ReadAllTables = false;                             // 39 true when read back
    bool ReadAllData = false;                               // 40 true when read back
    quint32 NoOfTablesToRead = 0;                           // 41
    quint32 NoOfRecordsToRead = 0;                          // 42
    qint32 TLS = 0;                                         // 44 1 = use SSL, 0 = not
    qint32 TimeOut = 0;                                     // 59
    QString XMLTableTag;                                    // 45
    QString XMLRecordTag;                                   // 46
    TXMLTransformationType XMLTransformationType = xttNone; // 48
    QString XMLTransformation;                              // 49
    QString SSLCACert;                                      // 56 certificate authority file
    QString SSLCert;                                        // 57 client certificate file
    QString SSLKey;                                         // 58 key file
    bool LoginRequired = false;                             // 50
    bool Passive = false;                                   // 51
    bool UseHostCommand = false;                            // 52
    bool AutoLogin = false;                                 // 53
    bool UseUnicode = false;                                // 54
    bool Compress = false;                                  // 55 protocol compression
    QString SourceFileCreationDate;                         // - run-time only
    qint32 SourceFileSize = 0;                              // -
    qint32 RecordNo = 0;                                    // -
    qint32 FirstRecord = 0;                                 // -
    qint32 LastRecord = 0;                                  // -
    qint32 FirstRecordFile = 0;                             // -
    qint32 LastRecordFile = 0;                              // -
    ToraConnectAs OraConnectAs = ocaNormal;                 // 60 Oracle privilege
};

// Field-by-field equality over all 68 fields (tests and change detection use it).
bool operator==(const TReaderConnection &a, const TReaderConnection &b);
inline bool operator!=(const TReaderConnection &a, const TReaderConnection &b) { return !(a == b); }

// The member's name as written in code ("dsOracle"); "ds?" followed by the ordinal when out of range.
QString dataSourceTypeName(TDataSourceType type);
