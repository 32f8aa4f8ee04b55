#include "gui/connections/ConnectionEditor.h"

#include "core/connections/ConnectionTypes.h"
#include "gui/connections/DBConnectionDialogUn.h"
#include "core/connections/vtrtools.h"
#include "core/workspace/ConnectionList.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <memory>

namespace ConnectionEditor {

namespace {

QString stampText(const QDateTime &when)
{
    return when.isValid() ? QLocale().toString(when, QLocale::ShortFormat) : QString();
}

void loadRow(TDBConnectionDlgFrm &dlg, const ConnectionRow &row)
{
    dlg.CreatedLbl->setText(stampText(row.stamps.created));
    dlg.CreatedBy->setText(row.stamps.createdBy);
    dlg.UpdatedLbl->setText(stampText(row.stamps.changed));
    dlg.UpdatedBy->setText(row.stamps.changedBy);
    dlg.c->setPlainText(QString::fromUtf8(row.connectionComments));
    dlg.NameEdt->setText(row.connectionName);
    // The record's own name (Description) follows and wins, as the parameters are read last.
    dlg.SetConnectionParams(ReaderConnectionFromStr(UnpackParameters(row.connectionParameters)));
}

void storeRow(const TDBConnectionDlgFrm &dlg, ConnectionRow &row)
{
    const TReaderConnection rc = dlg.connectionParams();
    row.connectionName = dlg.NameEdt->text();
    row.connectionComments = dlg.c->toPlainText().toUtf8();
    row.connectionParameters = PackParameters(ReaderConnectionToStr(rc));
    row.connectionType = ConnectionTypes::codeOfType(rc.ConnectionType);
}

} // namespace

bool run(QWidget *parent, const AppServices &services, ConnectionList &list, bool typeLocked)
{
    auto dlg = std::make_unique<TDBConnectionDlgFrm>(services, parent);
    dlg->setFreeOnClose(false);
    loadRow(*dlg, list.editCurrent());
    dlg->ConnectionTypeCombo->setEnabled(!typeLocked);

    // The row is written and posted while the dialog is still open, so a catalogue that refuses
    // it leaves the user in the dialog with everything typed.
    dlg->setCommit([&list, d = dlg.get()] {
        storeRow(*d, list.editCurrent());
        list.post();
    });

    if (dlg->exec() == QDialog::Accepted)
        return true;
    list.cancel();
    return false;
}

} // namespace ConnectionEditor
