#pragma once

class SettingsStore;
class TSqlFrm;

// A tab's stored settings under "SQL\": one set shared by every tab. Each new tab restores it,
// a style change saves it, and the tab that is current at exit saves it.
namespace SqlFrmSettings {

void restore(TSqlFrm *frame, SettingsStore &store);
void save(TSqlFrm *frame, SettingsStore &store);

} // namespace SqlFrmSettings
