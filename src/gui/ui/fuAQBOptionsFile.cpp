#include "gui/ui/fuAQBOptionsFile.h"

#include "core/base/DataFolder.h"
#include "core/base/SettingsStore.h"
#include "core/base/VantryError.h"

#include <QSettings>

namespace {

// Reads and writes one section's keys through a single table of (key, member) pairs, so the
// two directions cannot drift apart.
class Section
{
public:
    Section(QSettings &s, const char *name, bool writing) : m_s(s), m_writing(writing)
    {
        m_s.beginGroup(QString::fromLatin1(name));
    }
    ~Section() { m_s.endGroup(); }

    Section &item(const char *key, bool &value)
    {
        if (m_writing) {
            m_s.setValue(QString::fromLatin1(key), value ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
        } else if (m_s.contains(QString::fromLatin1(key))) {
            bool ok = false;
            const bool read = SettingsStore::parseBool(m_s.value(QString::fromLatin1(key)).toString(), &ok);
            if (ok)
                value = read;
        }
        return *this;
    }
    Section &item(const char *key, int &value)
    {
        if (m_writing) {
            m_s.setValue(QString::fromLatin1(key), value);
        } else if (m_s.contains(QString::fromLatin1(key))) {
            bool ok = false;
            const int read = m_s.value(QString::fromLatin1(key)).toString().trimmed().toInt(&ok);
            if (ok)
                value = read;
        }
        return *this;
    }
    Section &item(const char *key, QString &value)
    {
        if (m_writing)
            m_s.setValue(QString::fromLatin1(key), value);
        else if (m_s.contains(QString::fromLatin1(key)))
            value = m_s.value(QString::fromLatin1(key)).toString();
        return *this;
    }

private:
    QSettings &m_s;
    bool m_writing;
};

// The sections the generator does not own, read or written from one table.
void exchange(QSettings &s, QueryBuilderSettings &v, bool writing)
{
    QueryDiagramOptions &d = v.diagram;
    Section(s, "Behavior", writing)
        .item("AllowSleepMode", v.allowSleepMode)
        .item("ParsingErrorOnUnknownObjects", v.parsingErrorOnUnknownObjects);
    Section(s, "Common", writing)
        .item("ShowTreePane", d.showTreePane)
        .item("ShowMetadataTreePane", d.showMetadataTreePane)
        .item("ShowColumnsPane", d.showColumnsPane)
        .item("SplitVertical", d.splitVertical)
        .item("SplitHorizontal", d.splitHorizontal)
        .item("BorderWidth", d.borderWidth)
        .item("BorderStyle", d.borderStyle)
        .item("BkDarkness", d.bkDarkness)
        .item("TabStyle", d.tabStyle)
        .item("AddObjectStyle", d.addObjectStyle)
        .item("LinkPainter", d.linkPainter);
    Section(s, "TreePane", writing)
        .item("ShowFields", d.treeShowFields)
        .item("ShowObjects", d.treeShowObjects)
        .item("FieldsCaption", d.fieldsCaption)
        .item("ObjectsCaption", d.objectsCaption)
        .item("UnionsCaption", d.unionsCaption)
        .item("ExpandFields", d.expandFields)
        .item("ExpandObjects", d.expandObjects)
        .item("ExpandSubqueries", d.expandSubqueries)
        .item("ExpandUnions", d.expandUnions);
    Section(s, "MetadataTreePane", writing)
        .item("GroupingType", d.groupingType)
        .item("ShowUserTables", d.showUserTables)
        .item("ShowUserViews", d.showUserViews)
        .item("ShowUserProcedures", d.showUserProcedures)
        .item("ShowUserSynonyms", d.showUserSynonyms)
        .item("ShowSystemTables", d.showSystemTables)
        .item("ShowSystemViews", d.showSystemViews)
        .item("ShowSystemProcedures", d.showSystemProcedures)
        .item("ShowSystemSynonyms", d.showSystemSynonyms);
}

} // namespace

void QueryBuilderSettings::read(QSettings &settings)
{
    exchange(settings, *this, false);
    generator.read(settings);
}

void QueryBuilderSettings::write(QSettings &settings) const
{
    QueryBuilderSettings copy = *this; // the exchange table takes references
    exchange(settings, copy, true);
    generator.write(settings);
}

QString QueryBuilderSettings::fileName()
{
    return DataFolder::optionsFile();
}

QueryBuilderSettings QueryBuilderSettings::load(const QString &file)
{
    QueryBuilderSettings settings;
    QSettings ini(file, QSettings::IniFormat);
    settings.read(ini);
    return settings;
}

void QueryBuilderSettings::save(const QString &file) const
{
    QSettings ini(file, QSettings::IniFormat);
    write(ini);
    ini.sync();
    if (ini.status() != QSettings::NoError)
        throw VantryError(QStringLiteral("Cannot write the query builder options to \"%1\".").arg(file));
}
