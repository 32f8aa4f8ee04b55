#include "app/AppServices.h"
#include "app/DataFolder.h"
#include "app/MdmUn.h"
#include "app/MUn.h"
#include "app/SettingsStore.h"
#include "app/VantryApplication.h"
#include "app/VantryError.h"
#include "connections/ODBCHUn.h"
#include "connections/SqlServerDriver.h"
#include "connections/impDMun.h"
#include "interchange/DMToolsUn.h"

#include <QScreen>

#include <memory>

namespace {

// The SQL Server driver is chosen once, before any window exists, from the installed ODBC drivers.
// Without a driver manager the default choice stays; connecting through ODBC then says why.
void chooseSqlServerDriver()
{
    try {
        SqlServerDriver::chooseFrom(Odbc::drivers());
    } catch (const VantryError &) {
        SqlServerDriver::chooseFrom({});
    }
}

} // namespace

int main(int argc, char **argv)
{
    VantryApplication app(argc, argv);
    try {
        SettingsStore settings(DataFolder::settingsFile());
        chooseSqlServerDriver();
        // The services, in the order every later one may rely on.
        auto discovery = std::make_unique<TimpDM>();
        auto catalogue = std::make_unique<TMdm>(DataFolder::catalogueFile());
        auto tools = std::make_unique<TdmTools>();

        AppServices services;
        services.discovery = discovery.get();
        services.catalogue = catalogue.get();
        services.tools = tools.get();
        services.settings = &settings;
        services.hideConnectionGrid = argc > 1;

        TMFrm window(services);
        // Without a window manager "maximized" means nothing: start at the screen's size as well.
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            window.setGeometry(screen->availableGeometry());
        window.showMaximized();
        return app.exec();
    } catch (const VantryError &e) {
        VantryApplication::reportError(e.message());
    } catch (const std::exception &e) {
        VantryApplication::reportError(QString::fromUtf8(e.what()));
    }
    return 1;
}
