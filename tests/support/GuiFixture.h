#pragma once
#include "TempHome.h"
#include "gui/app/AppServices.h"
#include "core/base/DataFolder.h"
#include "core/app/MdmUn.h"
#include "gui/app/MUn.h"
#include "core/base/SettingsStore.h"
#include "core/connections/impDMun.h"
#include "gui/interchange/DMToolsUn.h"

#include <memory>

// The program's services over a fresh data folder, and a main window shown on them: what main.cpp
// builds, for widget tests.
struct GuiFixture
{
    TempHome home;
    std::unique_ptr<TimpDM> discovery = std::make_unique<TimpDM>();
    std::unique_ptr<SettingsStore> settings = std::make_unique<SettingsStore>(DataFolder::settingsFile());
    std::unique_ptr<TMdm> catalogue = std::make_unique<TMdm>(DataFolder::catalogueFile());
    std::unique_ptr<TdmTools> tools = std::make_unique<TdmTools>();
    std::unique_ptr<TMFrm> window;

    AppServices services(bool hideGrid = false) const
    {
        AppServices s;
        s.discovery = discovery.get();
        s.catalogue = catalogue.get();
        s.tools = tools.get();
        s.settings = settings.get();
        s.hideConnectionGrid = hideGrid;
        return s;
    }

    TMFrm *show(bool hideGrid = false)
    {
        window = std::make_unique<TMFrm>(services(hideGrid));
        window->resize(1200, 800);
        window->show();
        return window.get();
    }
};
