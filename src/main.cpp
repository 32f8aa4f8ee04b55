#include "gui/app/AppServices.h"
#include "core/app/CommandLine.h"
#include "core/base/DataFolder.h"
#include "core/app/MdmUn.h"
#include "gui/app/MUn.h"
#include "core/base/SettingsStore.h"
#include "gui/app/VantryApplication.h"
#include "core/base/VantryError.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/SqlServerDriver.h"
#include "core/connections/impDMun.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/ui/TextSearch.h"
#include "VersionInfo.h"

#include <QIcon>
#include <QScreen>
#include <QTimer>

#include <cstdio>
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

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

// --help and --version are answered on the terminal without a window, so they work where no
// display is available.
[[noreturn]] void answerOnTerminal(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Vantry"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTRY_FILE_VERSION));
    CommandLine::answer(app);
}

} // namespace

int main(int argc, char **argv)
{
    if (CommandLine::parse(argumentsOf(argc, argv)).action == CommandLine::Action::Answer)
        answerOnTerminal(argc, argv);

    VantryApplication app(argc, argv);
    // Parsed again without the options Qt's application object has taken (-style, -platform...).
    const CommandLine command = CommandLine::parse(QCoreApplication::arguments());
    if (command.action == CommandLine::Action::Fail) {
        std::fprintf(stderr, "vantry: %s\nTry 'vantry --help' for more information.\n", qPrintable(command.error));
        return 2;
    }
    // Lets the desktop match the window to its menu entry; the icon comes from the installed theme.
    QGuiApplication::setDesktopFileName(QStringLiteral("dev.vantry.Vantry"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("dev.vantry.Vantry")));
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
        // The search and replace dialogs remember their texts and options in the settings.
        TextSearch::attachSettings(&settings);
        services.hideConnectionGrid = command.hideConnectionGrid;

        TMFrm window(services);
        // A file that cannot be read leaves the tab as it was and says why once the window is up.
        QString fileError;
        if (!command.sqlFile.isEmpty()) {
            try {
                window.setFirstTabText(CommandLine::readSqlFile(command.sqlFile));
            } catch (const VantryError &e) {
                fileError = e.message();
            }
        }
        // Without a window manager "maximized" means nothing: start at the screen's size as well.
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            window.setGeometry(screen->availableGeometry());
        window.showMaximized();
        if (!fileError.isEmpty())
            QTimer::singleShot(0, &window, [fileError] { VantryApplication::reportError(fileError); });
        // For start-up measurements: leave as soon as the event loop has shown the window and
        // has nothing left to do.
        if (qEnvironmentVariableIsSet("VANTRY_QUIT_WHEN_IDLE"))
            QTimer::singleShot(0, &app, &QCoreApplication::quit);
        return app.exec();
    } catch (const VantryError &e) {
        VantryApplication::reportError(e.message());
    } catch (const std::exception &e) {
        VantryApplication::reportError(QString::fromUtf8(e.what()));
    }
    return 1;
}
