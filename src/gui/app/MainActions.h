#pragma once
#include <QKeySequence>
#include <QList>
#include <QString>

// The main window's action list: name, category, caption, hint and short cut of each action.
struct MainActionEntry
{
    const char *name;
    const char *category;
    const char *caption;
    const char *hint;
    QKeySequence shortcut;
};

const QList<MainActionEntry> &mainActions();

// One item of the main menu: the item's name and the action it shows, or a separator.
struct MainMenuItem
{
    const char *name;
    const char *action;     // nullptr for a separator
    const char *caption;    // nullptr: the action's caption
};

struct MainMenuEntry
{
    const char *name;
    const char *caption;
    QList<MainMenuItem> items;
};

const QList<MainMenuEntry> &mainMenus();
