#include "gui/app/MainActions.h"

const QList<MainActionEntry> &mainActions()
{
    // Ctrl+X on "Exit" is deliberate: it is the key the File menu shows for leaving the program.
    static const QList<MainActionEntry> entries = {
        {"Action1", "File", "Exit", "", QKeySequence(Qt::CTRL | Qt::Key_X)},
        {"Action16", "File", "Preferences", "", QKeySequence()},
        {"Action3", "View", "Sql Statement", "", QKeySequence()},
        {"Action4", "View", "Connections", "Show Connections", QKeySequence()},
        {"Action5", "View", "Log", "", QKeySequence()},
        {"Action6", "View", "System Tables", "Show System Tables", QKeySequence()},
        {"Action15", "View", "ODBC Data Source Administrator", "", QKeySequence(Qt::Key_F9)},
        {"Action13", "View", "SQL History", "", QKeySequence(Qt::Key_F6)},
        {"Action14", "View", "SQL Builder", "", QKeySequence(Qt::Key_F7)},
        {"NewTabAct", "View", "New Tab", "", QKeySequence(Qt::CTRL | Qt::Key_T)},
        {"ConnectionProperiesAction", "Connections", "Properties", "", QKeySequence(Qt::Key_F2)},
        {"AddConenctionAction", "Connections", "Add", "", QKeySequence()},
        {"DeleteConnectionAction", "Connections", "Delete", "", QKeySequence()},
        {"Action2", "Execute", "Run SQL", "", QKeySequence(Qt::Key_F3)},
        {"Action10", "Execute", "Run as Script", "", QKeySequence(Qt::Key_F4)},
        {"Action11", "Execute", "Previous Sql Statement", "", QKeySequence(Qt::Key_F11)},
        {"Action12", "Execute", "Next Sql Statement", "", QKeySequence(Qt::Key_F12)},
        {"HomePageAct", "Help", "Home Page", "", QKeySequence()},
        {"EmailSupportAct", "Help", "Email Support", "", QKeySequence()},
        {"Aboutact", "Help", "About", "", QKeySequence()},
    };
    return entries;
}

const QList<MainMenuEntry> &mainMenus()
{
    // "Conenctions1" and the caption "Contactl Support" are the menu's stored names and texts.
    static const QList<MainMenuEntry> menus = {
        {"File1", "File", {{"Exit1", "Action1", nullptr}}},
        {"View1",
         "View",
         {{"SqlStatement1", "Action3", nullptr},
          {"Connections1", "Action4", nullptr},
          {"SystemTables1", "Action6", nullptr},
          {"Log1", "Action5", nullptr},
          {"N2", nullptr, nullptr},
          {"ODBCDataSourceAdministrator1", "Action15", nullptr},
          {"SQLHistory1", "Action13", nullptr},
          {"SQLBuilder1", "Action14", nullptr},
          {"N3", nullptr, nullptr},
          {"NewTab1", "NewTabAct", nullptr}}},
        {"Conenctions1",
         "Connections",
         {{"Properties1", "ConnectionProperiesAction", nullptr},
          {"Add1", "AddConenctionAction", nullptr},
          {"Delete1", "DeleteConnectionAction", nullptr}}},
        {"Execute1",
         "Execute",
         {{"RunSQL1", "Action2", nullptr},
          {"RunasScript1", "Action10", nullptr},
          {"PreviousSqlStatement1", "Action11", nullptr},
          {"NextSqlStatement1", "Action12", nullptr}}},
        {"Help1",
         "Help",
         {{"HomePage1", "HomePageAct", nullptr},
          {"EmailSupport1", "EmailSupportAct", "Contactl Support"},
          {"N1", nullptr, nullptr},
          {"About1", "Aboutact", nullptr}}},
    };
    return menus;
}
