#pragma once
#include <QString>

// What the connection dialog shows for each entry of its type box (0 "Oracle Database" to
// 8 "Microsoft SQL Server CE"): which controls are visible, their captions, the file filter, and
// which server list fills the server box.
struct ConnectionTypeLayout
{
    bool port = false;             // port label and sePort
    bool database = false;         // DatabaseEd, its refresh button and label
    bool user = false;             // user label and box
    bool password = false;         // password label and box
    bool memo = false;             // OLE DB connection string memo
    bool file = false;             // file name box fe
    bool stringLabel = false;      // the label of the memo or the file box
    bool server = false;           // cbServer and its label
    bool connectAs = false;        // Oracle privilege
    bool unicode = false;          // "Use Unicode"
    bool ssl = false;              // "Use SSL" and the three SSL file boxes
    bool compression = false;      // "Use Compression"
    bool buildConnectionString = false;
    bool serverDropDown = true;    // false: the server box is a plain edit box
    bool passwordInUserCells = false;
    QString serverLabel;
    QString stringLabelText;
    QString fileFilter;
    QString serversKind;           // the GetServersList kind; empty: the server list stays as it is
    QString caption;
};

extern const char *const kFirebirdFileFilter;
extern const char *const kAllFilesFilter;

ConnectionTypeLayout connectionTypeLayout(int typeIndex);
