#pragma once
#include <QtGlobal>

class SettingsStore;
class TSqlFrm;

// A tab's stored settings under "SQL\": one set shared by every tab. Each new tab restores it,
// a style change saves it, and the tab that is current at exit saves it.
namespace SqlFrmSettings {

void restore(TSqlFrm *frame, SettingsStore &store);
void save(TSqlFrm *frame, SettingsStore &store);

// Bytes the rows of one result may take before fetching stops: "ResultMemoryLimitMB" under
// "SQL\", by default a quarter of the machine's physical memory.
qint64 resultMemoryBudget(const SettingsStore &store);

} // namespace SqlFrmSettings
