// The core's folders form levels: each folder includes only its own level and those below, the
// core never includes the GUI, and every project include goes through the one include root.
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

namespace {

// The folders each core folder may include, besides itself.
const QMap<QString, QSet<QString>> &allowedBelow()
{
    static const QMap<QString, QSet<QString>> levels{
        {"base", {}},
        {"interchange", {"base"}},
        {"connections", {"base", "interchange"}},
        {"app", {"base", "interchange", "connections"}},
        {"workspace", {"base", "interchange", "connections", "app"}},
        {"querybuilder", {"base", "interchange", "connections", "app"}},
    };
    return levels;
}

struct Include
{
    QString file;
    int line;
    QString target;
};

QList<Include> projectIncludes(const QString &folder)
{
    static const QRegularExpression include("^\\s*#\\s*include\\s*\"([^\"]+)\"");
    QList<Include> found;
    QDirIterator it(folder, {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        int line = 0;
        while (!file.atEnd()) {
            ++line;
            const auto match = include.match(QString::fromUtf8(file.readLine()));
            if (match.hasMatch())
                found.append({path, line, match.captured(1)});
        }
    }
    return found;
}

QString sourceDir()
{
    return qEnvironmentVariable("VANTRY_SOURCE_DIR");
}

} // namespace

class TestCoreLevels : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (sourceDir().isEmpty() || !QDir(sourceDir() + "/src/core").exists())
            QSKIP("the source tree is not available (VANTRY_SOURCE_DIR)");
    }

    void coreFoldersIncludeOnlyTheirLevelAndBelow()
    {
        const QString core = sourceDir() + "/src/core";
        QStringList faults;
        for (const QString &folder : QDir(core).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QVERIFY2(allowedBelow().contains(folder),
                     qPrintable("core folder without a level: " + folder));
            for (const Include &inc : projectIncludes(core + "/" + folder)) {
                const QStringList parts = inc.target.split('/');
                if (parts.size() < 3)
                    continue; // generated headers and Qt's moc files
                const QString &root = parts[0];
                const QString &target = parts[1];
                const bool allowed = root == "core"
                    && (target == folder || allowedBelow()[folder].contains(target));
                if (!allowed)
                    faults << QString("%1:%2 includes %3").arg(inc.file).arg(inc.line).arg(inc.target);
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }

    void everyProjectIncludeNamesItsLayer()
    {
        const QString src = sourceDir() + "/src";
        QSet<QString> projectHeaders;
        QDirIterator it(src, {"*.h"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            projectHeaders.insert(QFileInfo(it.next()).fileName());
        QStringList faults;
        for (const Include &inc : projectIncludes(src)) {
            if (!projectHeaders.contains(inc.target.section('/', -1)))
                continue; // generated headers and Qt's moc files
            const bool rooted = inc.target.startsWith("core/") || inc.target.startsWith("gui/");
            if (!rooted || !QFile::exists(src + "/" + inc.target))
                faults << QString("%1:%2 includes %3").arg(inc.file).arg(inc.line).arg(inc.target);
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }
};

QTEST_APPLESS_MAIN(TestCoreLevels)
#include "tst_CoreLevels.moc"
