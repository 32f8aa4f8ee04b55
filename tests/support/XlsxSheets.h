#pragma once
#include "PythonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

// Writes an .xlsx workbook with openpyxl, an independent writer: `sheets` is an array of
// {"name": ..., "rows": [[cell, ...], ...]} in workbook order, each cell a JSON number, text,
// boolean or null (an empty cell); {"date": "yyyy-mm-dd"} writes a date. True when written.
inline bool writeXlsxSheets(const QString &file, const QJsonArray &sheets)
{
    return runPythonWriter(
        QStringLiteral("import json, sys, datetime, openpyxl\n"
                       "book = openpyxl.Workbook(); book.remove(book.active)\n"
                       "for s in json.loads(sys.argv[2]):\n"
                       "    sheet = book.create_sheet(s['name'])\n"
                       "    for r, row in enumerate(s['rows'], 1):\n"
                       "        for c, v in enumerate(row, 1):\n"
                       "            if v is None: continue\n"
                       "            if isinstance(v, dict): v = datetime.date.fromisoformat(v['date'])\n"
                       "            sheet.cell(row=r, column=c, value=v)\n"
                       "book.save(sys.argv[1])\n"),
        {file, QString::fromUtf8(QJsonDocument(sheets).toJson(QJsonDocument::Compact))});
}

inline QJsonObject xlsxSheet(const QString &name, const QJsonArray &rows)
{
    return QJsonObject{{QStringLiteral("name"), name}, {QStringLiteral("rows"), rows}};
}
