#pragma once

class TimpDM;
class TMdm;
class TdmTools;
class SettingsStore;

// The process-wide services, created in main.cpp in this order and handed to every window that
// needs them. Nothing reaches them through globals.
struct AppServices
{
    TimpDM *discovery = nullptr;
    TMdm *catalogue = nullptr;
    TdmTools *tools = nullptr;
    SettingsStore *settings = nullptr;   // "Vantry.ini"
    bool hideConnectionGrid = false;     // --hide-connections, or a command-line argument that is not a file
};
