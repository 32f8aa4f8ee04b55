#pragma once
#include <QJsonDocument>
#include <QProcess>
#include <QtTest>

// Runs a short Python script with the system's interpreter (where the Debian reader packages
// live) and returns what it prints as JSON. Files we write are checked by readers we did not write.
inline QJsonDocument runPythonReader(const QString &script, const QStringList &args)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"), QStringList{QStringLiteral("-c"), script} + args);
    if (!python.waitForFinished(120000) || python.exitCode() != 0) {
        qWarning().noquote() << python.readAllStandardError();
        return {};
    }
    return QJsonDocument::fromJson(python.readAllStandardOutput());
}

// Reads the first sheet of an .xls file with xlrd and prints each cell of the given rows and
// first `columns` columns as [type, text] (None for an empty cell); `rows` is a Python range.
inline QJsonDocument readXlsCells(const QString &file, const QString &rows, int columns)
{
    // xlrd's cell types: 0 empty, 1 text, 2 number, 3 date, 4 boolean.
    return runPythonReader(
        QStringLiteral("import json, sys, xlrd, datetime\n"
                       "b = xlrd.open_workbook(sys.argv[1]); s = b.sheet_by_index(0)\n"
                       "def cell(r, c):\n"
                       "    if r >= s.nrows or c >= s.ncols: return None\n"
                       "    c = s.cell(r, c)\n"
                       "    if c.ctype == 0: return None\n"
                       "    if c.ctype == 1: return ['str', c.value]\n"
                       "    if c.ctype == 4: return ['bool', str(bool(c.value))]\n"
                       "    if c.ctype == 3: return ['datetime', str(datetime.datetime(*xlrd.xldate_as_tuple(c.value, b.datemode)))]\n"
                       "    v = c.value\n"
                       "    return ['int', str(int(v))] if v == int(v) else ['float', str(v)]\n"
                       "print(json.dumps([[cell(r, c) for c in range(%1)] for r in %2]))\n")
            .arg(columns)
            .arg(rows),
        {file});
}
