#include "core/base/SettingsStore.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/ui/AppStyles.h"
#include "gui/ui/DgUn.h"

#include "GuiFixture.h"

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolBar>
#include <QtTest>

// Themes and styles of the tools service (the theme table, the component styles, readable
// colours in every style) and the dialog base TDlgFrm. With VANTRY_STYLE_SCREENSHOTS set to a
// folder, the main window is saved there in two styles.
class TestStyles : public QObject
{
    Q_OBJECT

    static void checkReadable(const QPalette &p, const QColor &gridTitle, const QString &style)
    {
        const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
            {QPalette::WindowText, QPalette::Window},      {QPalette::ButtonText, QPalette::Button},
            {QPalette::Text, QPalette::Base},              {QPalette::Text, QPalette::AlternateBase},
            {QPalette::HighlightedText, QPalette::Highlight}, {QPalette::ToolTipText, QPalette::ToolTipBase},
            {QPalette::PlaceholderText, QPalette::Base},   {QPalette::Link, QPalette::Base},
        };
        for (auto [text, background] : pairs) {
            const double ratio = AppStyles::contrast(p.color(text), p.color(background));
            QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("%1: roles %2 on %3 give %4:1")
                                                  .arg(style).arg(int(text)).arg(int(background)).arg(ratio)));
        }
        if (gridTitle.isValid())
            QVERIFY2(AppStyles::contrast(p.color(QPalette::ButtonText), gridTitle) >= 4.5, qPrintable(style));
    }

private slots:
    void contrastFormula()
    {
        QCOMPARE(qRound(AppStyles::contrast(Qt::black, Qt::white)), 21);
        QCOMPARE(AppStyles::contrast(Qt::red, Qt::red), 1.0);
    }

    void everyStyleIsReadable()
    {
        TdmTools tools;
        for (int entry = 0; entry < TdmTools::styleNames().size(); ++entry) {
            tools.setApplicationStyle(entry);
            checkReadable(QApplication::palette(), tools.gridTitleColor(), TdmTools::styleNames()[entry]);
        }
        for (int style = 0; style < AppStyleCount; ++style)
            for (bool dark : {false, true})
                checkReadable(AppStyles::palette(TAppStyle(style), dark), AppStyles::gridTitleColor(TAppStyle(style)),
                              QStringLiteral("style %1%2").arg(style).arg(dark ? " (dark desktop)" : ""));
    }

    // A disabled toolbar button draws its caption fainter than an enabled one, in every style.
    void disabledToolbarButtonsLookDisabled()
    {
        TdmTools tools;
        QToolBar bar;
        bar.setToolButtonStyle(Qt::ToolButtonTextOnly);
        QAction *on = bar.addAction(QStringLiteral("Post"));
        QAction *off = bar.addAction(QStringLiteral("Post"));
        off->setEnabled(false);
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        // The caption's ink: the contrast of the pixel farthest from the button's background.
        auto ink = [](const QImage &image) {
            const QColor background = image.pixelColor(1, 1);
            double best = 1.0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    best = std::max(best, AppStyles::contrast(image.pixelColor(x, y), background));
            return best;
        };
        for (int entry = 0; entry < TdmTools::styleNames().size(); ++entry) {
            tools.setApplicationStyle(entry);
            QApplication::processEvents();
            const QImage enabled = bar.widgetForAction(on)->grab().toImage();
            const QImage disabled = bar.widgetForAction(off)->grab().toImage();
            const double enabledInk = ink(enabled), disabledInk = ink(disabled);
            QVERIFY2(disabledInk < enabledInk * 0.8,
                     qPrintable(QStringLiteral("%1: enabled %2:1, disabled %3:1")
                                    .arg(TdmTools::styleNames()[entry]).arg(enabledInk).arg(disabledInk)));
        }
    }

    void themeTwelveKeepsStyleButReappliesComponents()
    {
        TdmTools tools;
        tools.SetTheme(4);  // Office 2010 Blue
        QSignalSpy changed(&tools, &TdmTools::applicationStyleChanged);
        tools.SetTheme(12);
        QCOMPARE(tools.theme(), 12);
        QCOMPARE(int(tools.appStyle()), int(tsOffice2010Blue));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(tools.componentStyles().panel, 17);
    }

    void screenshots()
    {
        const QString folder = qEnvironmentVariable("VANTRY_STYLE_SCREENSHOTS");
        if (folder.isEmpty())
            QSKIP("VANTRY_STYLE_SCREENSHOTS not set");
        GuiFixture fixture;
        TMFrm *window = fixture.show();
        for (const QString &name : {QStringLiteral("Office 2007 Luna"), QStringLiteral("Office 2010 Black")}) {
            auto *list = window->findChild<QComboBox *>(QStringLiteral("cbStyle"));
            list->setCurrentIndex(TdmTools::styleNames().indexOf(name));
            emit list->activated(list->currentIndex());
            QTest::qWait(300);
            QVERIFY(window->grab().save(QDir(folder).filePath(name.simplified().replace(' ', '_') + ".png")));
        }
    }

    void dialogEnterConfirmsAndPlacementIsKept()
    {
        QTemporaryDir dir;
        SettingsStore settings(dir.filePath(QStringLiteral("Vantry.ini")));
        QPoint moved;
        {
            auto *dialog = new TDlgFrm(&settings);
            dialog->setAttribute(Qt::WA_DeleteOnClose, false);
            dialog->show();
            dialog->move(40, 30);
            moved = dialog->pos();
            QTest::keyClick(dialog, Qt::Key_Return);
            QCOMPARE(dialog->result(), int(QDialog::Accepted));
            QVERIFY(!dialog->isVisible());
            delete dialog;
        }
        QVERIFY(settings.contains(QStringLiteral("DlgFrm\\"), QStringLiteral("DlgFrm.Left")));
        TDlgFrm again(&settings);
        again.setAttribute(Qt::WA_DeleteOnClose, false);
        int okRuns = 0;
        again.setOkHandler([&okRuns] { ++okRuns; });
        again.show();
        QCOMPARE(again.pos(), moved);
        QTest::keyClick(&again, Qt::Key_Enter);
        QCOMPARE(okRuns, 1);
        QCOMPARE(again.result(), int(QDialog::Accepted));
    }
};

QTEST_MAIN(TestStyles)
#include "tst_Styles.moc"
