#pragma once
// How the query diagram and its panes look and behave: the "Common", "TreePane" and
// "MetadataTreePane" sections of the query builder's options file. The options dialog edits
// these values and reads and writes them; the diagram only applies them.

#include <QString>

struct QueryDiagramOptions
{
    // [Common]
    bool showTreePane = false;          // the query tree ("Unions", "Expressions", "Objects")
    bool showMetadataTreePane = true;   // the tables and views to drag into the diagram
    bool showColumnsPane = true;        // the select items grid below the diagram
    int splitVertical = 1;              // splitter sizes as the options dialog's spin boxes give them
    int splitHorizontal = 1;
    int borderWidth = 1;
    int borderStyle = 0;
    // 0 "Light gray on White", 1 "Dark gray on Light gray", 2 "Light gray on Dark gray"
    int bkDarkness = 0;
    int tabStyle = 0;                   // the union and sub-query tabs
    // 0 "Icon style", 1 "Small Icon style", 2 "List style", 3 "Report style"
    int addObjectStyle = 0;
    // 0 "Simple style", 1 "MS Access style", 2 "SQL Server Enterpise Manager style"
    int linkPainter = 0;

    // [TreePane]
    bool treeShowFields = true;
    bool treeShowObjects = true;
    QString fieldsCaption = QStringLiteral("Expressions");
    QString objectsCaption = QStringLiteral("Objects");
    QString unionsCaption = QStringLiteral("Unions");
    bool expandFields = true;
    bool expandObjects = true;
    bool expandSubqueries = true;
    bool expandUnions = true;

    // [MetadataTreePane]
    // 0 "No grouping" ... 8 "Group by Object Type, Database, Schema"
    int groupingType = 0;
    bool showUserTables = true;
    bool showUserViews = true;
    bool showUserProcedures = false;
    bool showUserSynonyms = false;
    bool showSystemTables = true;
    bool showSystemViews = false;
    bool showSystemProcedures = false;
    bool showSystemSynonyms = false;
};
