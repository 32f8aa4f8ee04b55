#include "core/connections/vtrIL.h"

#include <tuple>

namespace {

// All 68 fields as one tuple of references, in declaration order, so equality can't forget one.
auto allFields(const TReaderConnection &r)
{
    return std::tie(r.Description, r.ConnectionID, r.ConnectionType, r.UseTablesMask, r.TablesMask,
                    r.UseFilesMask, r.FilesMask, r.SourceFile, r.Directory, r.SearchInSubdirectories,
                    r.FileEncoding, r.Delimited, r.Delimiter, r.LineTerminator, r.Quote, r.HeaderLines,
                    r.FooterLines, r.OdbcDsnName, r.Server, r.DataBase, r.UserName, r.Password,
                    r.IsTable, r.Table, r.Tables, r.SelectStatement, r.ShowSystemTables,
                    r.DisableBulkFetch, r.CrossTable, r.FirstField, r.Blocks, r.BlockLength,
                    r.RejectedFile, r.RDelimiter, r.RQuote, r.ExcelVersion, r.AccessVersion,
                    r.SQL_SEPARATOR, r.SqlBefore, r.SqlAfter, r.Port, r.ReadAllTables, r.ReadAllData,
                    r.NoOfTablesToRead, r.NoOfRecordsToRead, r.TLS, r.TimeOut, r.XMLTableTag,
                    r.XMLRecordTag, r.XMLTransformationType, r.XMLTransformation, r.SSLCACert,
                    r.SSLCert, r.SSLKey, r.LoginRequired, r.Passive, r.UseHostCommand, r.AutoLogin,
                    r.UseUnicode, r.Compress, r.SourceFileCreationDate, r.SourceFileSize, r.RecordNo,
                    r.FirstRecord, r.LastRecord, r.FirstRecordFile, r.LastRecordFile, r.OraConnectAs);
}

static_assert(std::tuple_size<decltype(allFields(std::declval<const TReaderConnection &>()))>::value == 68,
              "TReaderConnection has 68 fields");

} // namespace

bool operator==(const TReaderConnection &a, const TReaderConnection &b)
{
    return allFields(a) == allFields(b);
}

QString dataSourceTypeName(TDataSourceType type)
{
    static const char *const names[kDataSourceTypeCount] = {
        "dsNone",      "dsText",        "dsODBC",     "dsDbf",       "dsAccess",     "dsExcel",
        "dsSqlServer", "dsOracle",      "dsEntered",  "dsMySql",     "dsPostgreSQL", "dsInterbase",
        "dsOleDb",     "dssInsert",     "dsFileSystem", "dsEmail",   "dsSqLite",     "dsXML",
        "dsSqlServerCE", "dsImap",      "dsSocket",   "dsDB2",       "dsSybaseASE",  "dsSybaseADS",
        "dsFTP",       "dsSMTP",        "dsPOP3",     "dsQVX"};
    const int ordinal = int(type);
    if (ordinal < kDataSourceTypeCount)
        return QString::fromLatin1(names[ordinal]);
    return QStringLiteral("ds?%1").arg(ordinal);
}
