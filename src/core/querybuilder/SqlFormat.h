#pragma once
// How the generator lays out SQL text: one SqlFormat for the main query, one for expression
// subqueries and one for derived tables (and WITH queries), plus the builder-wide options. The
// keys are those of the "MainQuery", "Subqueries", "DerivedQueries" and "Builder" sections of the
// query builder's options file.

#include <QString>

class QSettings;

struct SqlFormat
{
    bool mainPartNewLine = true;    // FROM, WHERE, GROUP BY, HAVING, ORDER BY start a new line
    bool keywordsNewLine = false;   // a clause keyword stands alone, its content on the next lines
    int partIndent = 2;             // indent of content moved below its keyword or onto new lines
    int globalIndent = 0;           // indent of the whole query inside the text around it
    bool selectItemNewLine = false; // one select item per line
    bool fromObjectNewLine = false; // one FROM object (a comma-separated entry) per line
    bool fromJoinNewLine = true;    // each JOIN on a new line
    // WHERE and HAVING criteria: 0 on one line; 1 one condition of the outer group per line,
    // with its AND/OR leading the line; 2 the same with AND/OR closing the line before; 3 as 1,
    // and nested groups opened onto lines of their own, indented by whereIndent / havingIndent.
    int whereNewLine = 0;
    int whereIndent = 2;
    bool groupItemNewLine = false;  // one GROUP BY item per line
    int havingNewLine = 0;
    int havingIndent = 2;

    bool operator==(const SqlFormat &o) const;
    bool operator!=(const SqlFormat &o) const { return !(*this == o); }

    // The defaults of each kind when the options file has none.
    static SqlFormat mainQueryDefaults();
    static SqlFormat subqueryDefaults();   // one line
    static SqlFormat derivedQueryDefaults();

    // Reads and writes one section's twelve keys; missing keys keep the current values.
    void read(QSettings &settings, const QString &section);
    void write(QSettings &settings, const QString &section) const;
};

struct GeneratorOptions
{
    SqlFormat mainQuery = SqlFormat::mainQueryDefaults();
    SqlFormat subqueries = SqlFormat::subqueryDefaults();
    SqlFormat derivedQueries = SqlFormat::derivedQueryDefaults();
    // "Builder" section.
    bool wordWrap = false;                   // break lines longer than rightMargin between tokens
    int rightMargin = 80;
    bool parenthesizeAndGroups = false;      // (a AND b) OR c rather than a AND b OR c
    bool parenthesizeSingleCriterion = false; // (a = 1) AND (b = 2)
    // Quote every name, not just those that need it (Excel sources name sheets "Sheet1$").
    bool quoteAllIdentifiers = false;

    // Reads and writes the four format sections ("Builder", "MainQuery", "Subqueries",
    // "DerivedQueries"). Quoting all identifiers is a property of the connection, not stored.
    void read(QSettings &settings);
    void write(QSettings &settings) const;
};
