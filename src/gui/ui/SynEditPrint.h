#pragma once
#include <Qsci/qsciprinter.h>

#include <QDateTime>
#include <QString>

class QsciScintilla;

// The editor printer: QScintilla's printer with the program's header and footer bands.
// Header: "Page: n of m" on the right, the title centred, and "Print Date: <date>. Time: <time>"
// centred in 6-point type. Footer: "n/m" on the right and "Printed by <application>" on the
// right in 6-point type.
class TSynEditPrint : public QsciPrinter
{
public:
    explicit TSynEditPrint(QPrinter::PrinterMode mode = QPrinter::ScreenResolution);

    void setTitle(const QString &title) { m_title = title; }
    QString title() const { return m_title; }

    // Prints the whole editor text: a first pass counts the pages the bands need.
    int printEditor(QsciScintilla *editor);
    int pageCount() const { return m_pageCount; }

    void formatPage(QPainter &painter, bool drawing, QRect &area, int pageNumber) override;

private:
    QString m_title;
    int m_pageCount = 0;
    int m_lastPage = 0;
    QDateTime m_printed;
};
