#include "core/app/CommandLine.h"

#include "core/base/VantryError.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <cstdlib>

namespace {

const char *const kHideConnections = "hide-connections";

// The parser both parse() and helpText() use, so the help always lists what is accepted.
void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "A desktop SQL client: keeps a catalogue of database connections, runs statements and "
        "scripts, and shows and edits the results in a grid."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(QCommandLineOption(
        QString::fromLatin1(kHideConnections),
        QStringLiteral("Hide the connection grid and its toggle button in every tab. Any argument "
                       "that is not a file to open does the same.")));
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("A SQL file to open in the first tab."),
                                 QStringLiteral("[file.sql]"));
}

bool isFileToOpen(const QString &argument)
{
    return argument.endsWith(QLatin1String(".sql"), Qt::CaseInsensitive) || QFileInfo(argument).isFile();
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    CommandLine result;
    QCommandLineParser parser;
    describe(parser);
    const bool parsed = parser.parse(arguments);
    for (const char *option : {"help", "help-all", "version"}) {
        if (parser.isSet(QString::fromLatin1(option))) {
            result.action = Action::Answer;
            return result;
        }
    }
    if (!parsed) {
        result.action = Action::Fail;
        result.error = parser.errorText();
        return result;
    }
    result.hideConnectionGrid = parser.isSet(QString::fromLatin1(kHideConnections));
    for (const QString &argument : parser.positionalArguments()) {
        if (result.sqlFile.isEmpty() && isFileToOpen(argument))
            result.sqlFile = QFileInfo(argument).absoluteFilePath();
        else
            result.hideConnectionGrid = true;
    }
    return result;
}

void CommandLine::answer(const QCoreApplication &app)
{
    QCommandLineParser parser;
    describe(parser);
    // The parser prints the help (with Qt's own options for --help-all) or "<name> <version>",
    // and ends the process.
    parser.process(app);
    std::exit(0);
}

QString CommandLine::readSqlFile(const QString &fileName)
{
    QFile file(fileName);
    if (QFileInfo(fileName).isDir())
        throw VantryError(QStringLiteral("Cannot open \"%1\": it is a folder.").arg(fileName));
    if (!file.open(QIODevice::ReadOnly))
        throw VantryError(QStringLiteral("Cannot open \"%1\": %2").arg(fileName, file.errorString()));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw VantryError(QStringLiteral("Cannot read \"%1\": %2").arg(fileName, file.errorString()));
    const auto encoding = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(encoding.value_or(QStringConverter::Utf8));
    // Never null, even for an empty file: a null text means "no file" to the window.
    QString text = QLatin1String("");
    text += decoder.decode(bytes);
    // Scripts saved by older Windows tools are often in a single-byte code page: rather than
    // refuse them, read every byte as one Latin-1 character.
    if (decoder.hasError())
        return QString::fromLatin1(bytes);
    return text;
}
