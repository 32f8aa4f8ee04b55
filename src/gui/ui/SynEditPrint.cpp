#include "gui/ui/SynEditPrint.h"

#include <Qsci/qsciscintilla.h>

#include <QCoreApplication>
#include <QLocale>
#include <QPainter>
#include <QTemporaryFile>

namespace {

QFont bandFont(const QFont &base, bool small)
{
    QFont font = base;
    if (small)
        font.setPointSizeF(6);
    return font;
}

} // namespace

TSynEditPrint::TSynEditPrint(QPrinter::PrinterMode mode) : QsciPrinter(mode)
{
    setWrapMode(QsciScintilla::WrapWord);
    // The number of copies is the printer property the program sets to 1 before printing.
    setCopyCount(1);
}

int TSynEditPrint::printEditor(QsciScintilla *editor)
{
    m_printed = QDateTime::currentDateTime();
    // Counting pass: the same page layout into a throw-away PDF.
    {
        QTemporaryFile scratch;
        if (scratch.open()) {
            TSynEditPrint counter(QPrinter::HighResolution);
            counter.setPageLayout(pageLayout());
            counter.setResolution(resolution());
            counter.setOutputFormat(QPrinter::PdfFormat);
            counter.setOutputFileName(scratch.fileName());
            counter.m_title = m_title;
            counter.m_pageCount = 1;
            counter.printRange(editor);
            m_pageCount = std::max(1, counter.m_lastPage);
        }
    }
    m_lastPage = 0;
    return printRange(editor);
}

void TSynEditPrint::formatPage(QPainter &painter, bool drawing, QRect &area, int pageNumber)
{
    m_lastPage = std::max(m_lastPage, pageNumber);
    const QFont base = painter.font();
    const QFontMetrics normal(bandFont(base, false), painter.device());
    const QFontMetrics small(bandFont(base, true), painter.device());
    const int headerHeight = 2 * normal.height() + small.height() + normal.height() / 2;
    const int footerHeight = normal.height() + small.height() + normal.height() / 2;
    const QRect header(area.left(), area.top(), area.width(), headerHeight);
    const QRect footer(area.left(), area.bottom() - footerHeight, area.width(), footerHeight);
    area.setTop(header.bottom() + 1);
    area.setBottom(footer.top() - 1);
    if (!drawing)
        return;

    const QString page = QString::number(pageNumber);
    const QString pages = QString::number(m_pageCount);
    const QLocale locale;
    auto line = [&painter, &base](const QRect &box, int top, int height, const QString &text, Qt::Alignment align, bool isSmall) {
        painter.setFont(bandFont(base, isSmall));
        painter.drawText(QRect(box.left(), top, box.width(), height), align | Qt::AlignVCenter, text);
    };
    int y = header.top();
    line(header, y, normal.height(), QStringLiteral("Page: %1 of %2").arg(page, pages), Qt::AlignRight, false);
    y += normal.height();
    line(header, y, normal.height(), m_title, Qt::AlignHCenter, false);
    y += normal.height();
    line(header, y, small.height(),
         QStringLiteral("Print Date: %1. Time: %2")
             .arg(locale.toString(m_printed.date(), QLocale::ShortFormat), locale.toString(m_printed.time(), QLocale::ShortFormat)),
         Qt::AlignHCenter, true);
    y = footer.top() + normal.height() / 2;
    line(footer, y, normal.height(), QStringLiteral("%1/%2").arg(page, pages), Qt::AlignRight, false);
    y += normal.height();
    line(footer, y, small.height(), QStringLiteral("Printed by ") + QCoreApplication::applicationName(), Qt::AlignRight, true);
    painter.setFont(base);
}
