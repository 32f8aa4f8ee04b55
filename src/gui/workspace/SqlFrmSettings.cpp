#include "gui/workspace/SqlFrmSettings.h"

#include "core/base/PhysicalMemory.h"
#include "core/base/SettingsStore.h"
#include "gui/workspace/ResultPanel.h"
#include "gui/workspace/SqlUn.h"

#include <Qsci/qsciscintilla.h>

#include <QComboBox>
#include <QSpinBox>
#include <QSplitter>
#include <QToolButton>

namespace {

const QString kPath = QStringLiteral("SQL\\");

// The tab's toggle buttons whose down state is stored.
const char *const kButtons[] = {"tbShowConnections", "tbShowLog", "tbShowSql", "cbAutoClearLog"};

// The result area's three switches, kept with the tab's other settings.
struct PanelSwitch
{
    const char *property;
    bool (ResultPanel::*get)() const;
    void (ResultPanel::*set)(bool);
};

const PanelSwitch kPanelSwitches[] = {
    {"tbReadOnly.Down", &ResultPanel::readOnlyDown, &ResultPanel::setReadOnlyDown},
    {"tbOptimizeWidth.Down", &ResultPanel::optimizeWidthDown, &ResultPanel::setOptimizeWidthDown},
    {"tbShowGroupping.Down", &ResultPanel::showGrouppingDown, &ResultPanel::setShowGrouppingDown},
};

template <typename T> T *child(TSqlFrm *frame, const char *name)
{
    return frame->findChild<T *>(QString::fromLatin1(name));
}

// A splitter pane's stored size: which splitter, which pane, and the property it is kept under.
struct PaneSize
{
    const char *splitter;
    int pane;
    const char *property;
};

const PaneSize kPanes[] = {
    {"Splitter2", 0, "ConnectionsGrid.Height"},
    {"Splitter2", 1, "TablesPanel.Height"},
    {"Splitter3", 0, "Panel1.Width"},
    {"Splitter1", 0, "SqlPanel.Height"},
    {"Splitter1", 2, "LogPanel.Height"},
};

} // namespace

namespace SqlFrmSettings {

void restore(TSqlFrm *frame, SettingsStore &store)
{
    for (const char *name : kButtons) {
        const QString key = QString::fromLatin1(name) + QStringLiteral(".Down");
        if (QToolButton *b = child<QToolButton>(frame, name); b && store.contains(kPath, key))
            b->setChecked(store.readBool(kPath, key, b->isChecked()));
    }
    ResultPanel *panel = frame->resultPanel();
    for (const PanelSwitch &sw : kPanelSwitches) {
        const QString key = QString::fromLatin1(sw.property);
        if (store.contains(kPath, key))
            (panel->*sw.set)(store.readBool(kPath, key, (panel->*sw.get)()));
    }
    for (const PaneSize &p : kPanes) {
        auto *splitter = child<QSplitter>(frame, p.splitter);
        const int size = store.readInt(kPath, QString::fromLatin1(p.property), -1);
        if (splitter && size > 0 && p.pane < splitter->count()) {
            QList<int> sizes = splitter->sizes();
            sizes[p.pane] = size;
            splitter->setSizes(sizes);
        }
    }
    if (store.contains(kPath, QStringLiteral("se.Lines")))
        frame->editor()->setText(store.readString(kPath, QStringLiteral("se.Lines")));
    auto *records = child<QSpinBox>(frame, "seRecords");
    records->setValue(store.readInt(kPath, QStringLiteral("seRecords.Value"), records->value()));
    auto *style = child<QComboBox>(frame, "cbStyle");
    style->setCurrentIndex(qBound(0, store.readInt(kPath, QStringLiteral("cbStyle.ItemIndex"), 0), style->count() - 1));
    auto *separator = child<QComboBox>(frame, "peSeparator");
    const int separatorIndex = store.readInt(kPath, QStringLiteral("peSeparator.ItemIndex"), separator->currentIndex());
    if (separatorIndex >= 0 && separatorIndex < separator->count())
        separator->setCurrentIndex(separatorIndex);
    if (store.contains(kPath, QStringLiteral("peSeparator.Text")))
        separator->setCurrentText(store.readString(kPath, QStringLiteral("peSeparator.Text")));
}

void save(TSqlFrm *frame, SettingsStore &store)
{
    for (const char *name : kButtons) {
        const QToolButton *b = child<QToolButton>(frame, name);
        store.writeBool(kPath, QString::fromLatin1(name) + QStringLiteral(".Down"), b && b->isChecked());
    }
    for (const PanelSwitch &sw : kPanelSwitches)
        store.writeBool(kPath, QString::fromLatin1(sw.property), (frame->resultPanel()->*sw.get)());
    for (const PaneSize &p : kPanes) {
        auto *splitter = child<QSplitter>(frame, p.splitter);
        const QList<int> sizes = splitter ? splitter->sizes() : QList<int>();
        if (p.pane < sizes.size() && sizes[p.pane] > 0)
            store.writeInt(kPath, QString::fromLatin1(p.property), sizes[p.pane]);
    }
    store.writeInt(kPath, QStringLiteral("tbShowGroupping.DrawPosition"),
                   frame->property("groupingDrawPosition").toInt());
    store.writeString(kPath, QStringLiteral("se.Lines"), frame->editor()->text());
    store.writeInt(kPath, QStringLiteral("seRecords.Value"), child<QSpinBox>(frame, "seRecords")->value());
    store.writeInt(kPath, QStringLiteral("cbStyle.ItemIndex"), child<QComboBox>(frame, "cbStyle")->currentIndex());
    auto *separator = child<QComboBox>(frame, "peSeparator");
    store.writeString(kPath, QStringLiteral("peSeparator.Text"), separator->currentText());
    store.writeInt(kPath, QStringLiteral("peSeparator.ItemIndex"), separator->currentIndex());
    store.sync();
}

} // namespace SqlFrmSettings

qint64 SqlFrmSettings::resultMemoryBudget(const SettingsStore &store)
{
    constexpr qint64 MB = 1024 * 1024;
    const qint64 fallback = std::max<qint64>(physicalMemoryBytes() / 4 / MB, 256);
    return qint64(store.readInt(kPath, QStringLiteral("ResultMemoryLimitMB"), int(fallback))) * MB;
}
