#pragma once
// Everything the query builder's options dialog sets, and its settings file "options.ini": the
// engine's behaviour ("Behavior"), the diagram's look ("Common", "TreePane", "MetadataTreePane")
// and the SQL text generator ("Builder", "MainQuery", "Subqueries", "DerivedQueries").

#include "core/querybuilder/SqlFormat.h"
#include "gui/components/QueryDiagramOptions.h"

#include <QString>

class QSettings;

struct QueryBuilderSettings
{
    // [Behavior]
    bool allowSleepMode = true;                 // keep a non-SELECT text instead of refusing it
    bool parsingErrorOnUnknownObjects = false;  // refuse text naming a table the catalogue lacks
    QueryDiagramOptions diagram;
    GeneratorOptions generator;

    // Missing keys keep the current values.
    void read(QSettings &settings);
    void write(QSettings &settings) const;

    // The settings file in the data folder ("beside the executable" when that folder is the
    // program's own and writable, else the user's data folder), and reading and writing it.
    static QString fileName();
    static QueryBuilderSettings load(const QString &file = fileName());
    // Throws VantryError naming the file when it cannot be written.
    void save(const QString &file = fileName()) const;
};
