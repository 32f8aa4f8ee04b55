#pragma once
// Turns an ADO connection string into an ODBC connection string for unixODBC: there is no OLE DB
// layer on this system, so every connection of the ADO path goes through ODBC.
//
//   MSDASQL with Extended Properties   the extended properties as they stand
//   MSDASQL with Data Source           "DSN=" data source ";UID=" user ";PWD=" password
//   SQLOLEDB, SQLNCLI..., MSOLEDBSQL   the chosen SQL Server ODBC driver text, ";Server=", ";Database=",
//                                      then ";UID=...;PWD=..." or ";Trusted_Connection=Yes"
//   Microsoft.Jet.OLEDB..., Microsoft.ACE.OLEDB...
//                                      "DRIVER={MDBTools};DBQ=" the file (read-only Access)
//   File Name=<data link file>          the string inside the file (a name without folder lies in the
//                                      data link folder), then the string's other pieces, translated
//   no Provider, an ODBC string        as it stands ("DRIVER=..." or "DSN=...")
//   no Provider otherwise              read as MSDASQL, ADO's own default provider
//   any other provider                 VantryError "OLE DB provider '<name>' is not available on this system"

#include <QString>
#include <QVector>

class AdoToOdbc
{
public:
    struct Pair
    {
        QString key;   // as written, blanks around it removed
        QString value; // quotes (double, single, or ODBC braces) removed, doubled quotes undone
    };

    // The key=value pairs of a connection string, separated by ";". A value may be enclosed in
    // double or single quotes (a doubled quote inside stands for one) or in braces ("}}" for "}"),
    // and then may contain ";". Pieces without "=" are skipped.
    static QVector<Pair> parse(const QString &connectionString);

    // The value of a key (compared ignoring case) or of the first of its aliases that is present;
    // the last occurrence wins. present tells whether any was found.
    static QString value(const QVector<Pair> &pairs, const QStringList &keys, bool *present = nullptr);

    // The ODBC connection string for an ADO connection string; uses the process-wide SQL Server
    // driver choice. Throws VantryError when the provider has no ODBC counterpart here.
    static QString translate(const QString &adoConnectionString);

    // An ODBC attribute value, in braces when it would otherwise break the string.
    static QString odbcValue(const QString &value);
    // An ADO property value, in double quotes (doubled inside) when it would otherwise break the string.
    static QString adoValue(const QString &value);
};
